// Ends in one of the ways in which a process can end while the library is in use. Its result is
// 0 if the library does what it must until the very end.

#include <sys/resource.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <mutex>
#include <new>
#include <string>
#include <system_error>
#include <utility>

#include "Allocations.h"
#include "InfoSynchronizerManager.h"

namespace {

using camInfosync::InfoSynchronizerManager;

InfoSynchronizerManager& manager() {
    return InfoSynchronizerManager::getInstance();
}

void expect(bool holds) {
    if (!holds) {
        std::_Exit(1);
    }
}

void useAll(const std::string& image) {
    manager().registerSnapshotRequestRecord(image);
    manager().updateFrameInfo(image, 1, "1", {1}, 1);
    manager().updateNodeProcTime(image, "node", 1, 2, 3);
    for (uint32_t stage = 0; stage < 15; ++stage) {
        manager().updateSnapshotTimeInfo(image, stage);
    }
    manager().updateSnapshotTimeInfo(image, {{camInfosync::TimeStageToChar[0], 1}});
    manager().snapshotRequestInfoFlush(image, camInfosync::INFO_SYNC_TYPE_COLLECT);
    expect(manager().mRequestRecordQueue->records.count(image) == 1);
}

// Made before the manager, and destroyed after it.
struct Witness {
    std::mutex mutex;
    int queued = 0;
    int ran = 0;
    std::weak_ptr<camInfosync::RequestRecord> record;
    ~Witness() { expect(ran == queued && record.expired()); }
};

void leaveRecords() {
    static Witness witness;
    for (int i = 0; i < 100; ++i) {
        useAll(std::to_string(i));
    }
    witness.record = manager().mRequestRecordQueue->records.at("50");
    expect(!witness.record.expired());
}

void leaveTasks() {
    static Witness witness;
    // None gets on before all are queued.
    const std::lock_guard<std::mutex> lock(witness.mutex);
    for (; witness.queued < 100; ++witness.queued) {
        const auto task = [] {
            const std::lock_guard<std::mutex> taskLock(witness.mutex);
            ++witness.ran;
        };
        expect(manager().mThreadPool->enqueue(task) == 0);
    }
}

// Made after the manager, and destroyed before it.
struct LateUser {
    ~LateUser() { useAll("late"); }
};

void useLate() {
    manager();
    static const LateUser user;
    useAll("early");
}

// The accessors build their managers once there is memory.
void endMemory() {
    for (auto* accessor : {+[]() -> void* { return &manager(); }, &GetInstance}) {
        int failures = 0;
        for (void* built = nullptr; built == nullptr && failures < 1000; ++failures) {
            allocations::left = failures;
            try {
                built = accessor();
            } catch (const std::bad_alloc&) {
            }
            allocations::left = -1;
        }
        expect(failures > 5 && failures < 1000);
        expect(static_cast<InfoSynchronizerManager*>(accessor())->mSynchronizers.size() == 3);
    }
    useAll("image");
}

// No room for another thread's stack.
void limitMemory() {
    rlimit limit{};
    getrlimit(RLIMIT_AS, &limit);
    const rlimit none{0, limit.rlim_max};
    setrlimit(RLIMIT_AS, &none);
    std::string error;
    try {
        manager();
    } catch (const std::system_error& thrown) {
        error = thrown.what();
    }
    setrlimit(RLIMIT_AS, &limit);
    expect(error.rfind("thread constructor failed", 0) == 0);
    useAll("image");
}

}  // namespace

int main(int argc, char** argv) {
    const std::pair<const char*, void (*)()> ends[] = {
            {"nothing", [] {}},
            {"GetInstance", [] { expect(GetInstance() != nullptr); }},
            {"getInstance", [] { manager(); }},
            {"records", leaveRecords},
            {"tasks", leaveTasks},
            {"late", useLate},
            {"memory", endMemory},
            {"limits", limitMemory},
    };
    for (const auto& [name, run] : ends) {
        if (argc == 2 && std::strcmp(argv[1], name) == 0) {
            run();
            return 0;
        }
    }
    return 2;
}
