// A HAL that does what its first argument says.

#include <dlfcn.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <mutex>
#include <new>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "Allocations.h"
#include "CaptureLog.h"
#include "InfoSynchronizerManager.h"
#include "Service.h"

using namespace camInfosync;  // NOLINT(google-build-using-namespace)
using Text = std::string;

namespace {

InfoSynchronizerManager& manager() {
    return InfoSynchronizerManager::getInstance();
}
InfoSynchronizerManager& other() {
    return *static_cast<InfoSynchronizerManager*>(GetInstance());
}
Service& service() {
    return *static_cast<Service*>(dlsym(RTLD_DEFAULT, kService));
}

template <typename Function>
void onThreads(int count, Function function) {
    std::vector<std::thread> threads(static_cast<size_t>(count));
    for (std::thread& thread : threads) {
        thread = std::thread(function, static_cast<int>(&thread - threads.data()));
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

// The calls of a log that has every operation, with every kind of value, and some that no log has.
void everything() {
    std::ifstream log(std::getenv("EXPECTED"));
    std::vector<replay::LineError> errors;
    for (Text line; std::getline(log, line);) {
        const auto step =
                replay::readCaptureLine(line, "", errors, replay::LineRules::kUnderHeader);
        if (step.run != nullptr && step.number < 34) {
            step.run(step.onOtherManager ? other() : manager());
        }
    }
    void* out = nullptr;
    manager().request(static_cast<InfoSyncType>(7), "not read", &out);
    InfoSynchronizerManager own;
    own.registerSnapshotRequestRecord("C");
    own.updateAnchorFrame("C", 1);
    own.updateAnchorFrame("C", 2);
}

// Rounds in which eight threads change one record at the same time; prints what became of it.
void order() {
    constexpr int kThreads = 8;
    constexpr int kRounds = 400;
    std::atomic<int> arrived{0};
    const auto meet = [&](int times) {
        for (++arrived; arrived < kThreads * times;) {
            std::this_thread::yield();
        }
    };
    onThreads(kThreads, [&](int thread) {
        for (int round = 0; round < kRounds; ++round) {
            const Text image = "image-" + std::to_string(round);
            meet(2 * round + 1);
            if (thread > 3) {
                manager().registerSnapshotRequestRecord(image);
            }
            for (int i = 0; i < 4; ++i) {
                manager().updateSnapshotErrorInfo(image, std::to_string(thread).c_str());
            }
            other().updatePostProcInfo({{image, thread}});
            if (thread > 6) {
                manager().unregisterSnapshotRequestRecord(image);
            }
            meet(2 * round + 2);
            if (thread == 0) {
                const auto& records = manager().mRequestRecordQueue->records;
                const auto record = records.find(image);
                Text errors = record == records.end() ? "none" : "";
                for (const Text& error :
                     errors.empty() ? record->second->errorInfo : std::vector<Text>()) {
                    errors += error;
                }
                std::printf("%s %u\n", errors.c_str(),
                            other().mRequestRecordQueue->postProcInfo.at(image));
            }
        }
    });
}

// While one call cannot take effect, no other on the same records has a line.
void held() {
    // Gives the call time enough to write a line that must not be written.
    static constexpr auto start = [](void (*call)()) {
        std::thread(call).detach();
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    };
    manager().registerSnapshotRequestRecord("A");
    manager().updateFrameInfo("A", 1, "1", {}, 0);
    service().report = [] {
        start([] { other().unregisterSnapshotRequestRecord("A"); });
        other().updateAnchorFrame("A", 1);
    };
    const std::scoped_lock lock(other().mRequestRecordQueue->mutex);
    for (void (*call)() : {+[] { manager().snapshotRequestInfoFlush("A", INFO_SYNC_TYPE_COLLECT); },
                           +[] { manager().unregisterSnapshotRequestRecord("A"); },
                           +[] { manager().updateAnchorFrame("A", 2); },
                           +[] { other().updateAnchorFrame("A", 3); }}) {
        start(call);
    }
    _exit(0);
}

// A service that waits, within a report, for calls that have no effect, and so need not wait for
// it.
void stuck() {
    manager().registerSnapshotRequestRecord("A");
    manager().updateFrameInfo("A", 1, "1", {}, 0);
    service().report = [] {
        std::thread([] {
            for (int i = 0; i < 100; ++i) {
                manager().updateVndResultInfo("A", 1, -1);
            }
        }).join();
    };
    manager().snapshotRequestInfoFlush("A", INFO_SYNC_TYPE_COLLECT);
    manager().updateAnchorFrame("A", 2);
}

// A service that works with the library while it is asked, changes its mind, and throws.
void nested() {
    int questions = 0;
    service().answer = [&]() -> Text {
        switch (++questions) {
            case 2:
                manager().updateAnchorFrame("A", 1);
                break;
            case 3:
                std::thread([] { manager().updateAnchorFrame("A", 2); }).join();
                break;
            case 4:
                return "disabled";
            case 6:
                throw std::runtime_error("thrown");
            default:
                break;
        }
        return "enabled";
    };
    for (const char* name : {"A", "B", "C", "D", "E", "F"}) {
        try {
            manager().registerSnapshotRequestRecord(name);
        } catch (const std::runtime_error& error) {
            std::printf("%s\n", error.what());
        }
    }
    service().report = [] {
        manager().updateVndResultInfo("A", 1, -1);
        manager().updateVndResultInfo("A", 1, -1);
        other().updateAnchorFrame("A", 3);
        throw 5;
    };
    try {
        manager().snapshotRequestInfoFlush("A", INFO_SYNC_TYPE_COLLECT);
    } catch (int error) {
        std::printf("%d\n", error);
    }
    service().report = [] { std::thread([] { manager().updateAnchorFrame("A", 4); }).join(); };
    RequestRecord record(RequestType{});
    manager().request(INFO_SYNC_TYPE_COLLECT, &record, nullptr);
}

// Calls without end from eight threads.
void load() {
    manager().registerSnapshotRequestRecord("first");
    std::puts("begun");
    std::fflush(stdout);
    onThreads(8, [](int thread) {
        for (uint64_t i = 0;; ++i) {
            const Text image = "image-" + std::to_string(thread) + std::to_string(i % 7);
            manager().registerSnapshotRequestRecord(image);
            manager().updateSnapshotErrorInfo(image, Text(i % 200, 'x').c_str());
            manager().unregisterSnapshotRequestRecord(image);
        }
    });
}

// Calls until both files have been in turn; no more than the limit on the disk at any time.
void turns() {
    manager().updateAnchorFrame("first", 1);
    for (int i = 0; i < 900; ++i) {
        const Text image = "image-" + std::to_string(i) + Text(i < 300 ? 100 : 0, 'x');
        manager().registerSnapshotRequestRecord(image);
        if (i % 90 != 0) {
            manager().unregisterSnapshotRequestRecord(image);
        }
        uintmax_t bytes = 0;
        for (const auto& file :
             std::filesystem::directory_iterator(std::getenv("INFOSYNC_RECORD"))) {
            bytes += file.file_size();
        }
        if (bytes > 65536) {
            std::printf("%ju bytes\n", bytes);
        }
    }
}

// Calls that are asked about in one part, and answered in the next.
void parts() {
    Text answer = "enabled";
    bool isLong = false;
    service().answer = [&] {
        for (int i = std::exchange(isLong, false) ? 9 : 0; i > 0; --i) {
            std::thread([] {
                other().updateSnapshotErrorInfo("filler", Text(4000, 'x').c_str());
            }).join();
        }
        return answer;
    };
    manager().registerSnapshotRequestRecord("kept");
    auto* const proxy = std::exchange(InfoSynchronizer::mIntentAwareImpl,
                                      static_cast<IntentAwareSys*>(service().object));
    manager().registerSnapshotRequestRecord("nobody saw the answer");
    InfoSynchronizer::mIntentAwareImpl = proxy;
    answer = "disabled";
    manager().registerSnapshotRequestRecord("without a record");
    answer = "enabled";
    isLong = true;
    manager().registerSnapshotRequestRecord("A");
    manager().updateFrameInfo("A", 1, "1", {}, 0);
    manager().snapshotRequestInfoFlush("A", INFO_SYNC_TYPE_COLLECT);
    isLong = true;
    manager().unregisterSnapshotRequestRecord("kept");
    manager().registerSnapshotRequestRecord("B");
    manager().updateFrameInfo("B", 1, "1", {}, 0);
    manager().snapshotRequestInfoFlush("B", INFO_SYNC_TYPE_COLLECT);
}

// More than a file can hold: a text, a name, names that are still registered, and an answer.
void many() {
    manager().registerSnapshotRequestRecord("A");
    for (int i = 0; i < 300; ++i) {
        manager().registerSnapshotRequestRecord("B-" + std::to_string(i) + Text(100, 'x'));
    }
    manager().updateSnapshotErrorInfo("A", Text(20000, 'x').c_str());
    manager().updateAnchorFrame(Text(20000, 'x'), 1);
    service().answer = [] { return Text(20000, 'x'); };
    manager().registerSnapshotRequestRecord("last");
}

void tenCalls() {
    prctl(PR_SET_NAME, "\xff first");
    for (int i = 1; i <= 10; ++i) {
        manager().updateAnchorFrame("A", i);
        prctl(PR_SET_NAME, "then");
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    std::puts("ten");
}

void forked() {
    manager().updateAnchorFrame("A", 1);
    const pid_t child = fork();
    if (child == 0) {
        manager().updateAnchorFrame("A", 2);
        _exit(0);  // in a child the library itself cannot end: its worker is not there
    }
    int status = 1;
    waitpid(child, &status, 0);
    manager().updateAnchorFrame("A", 3);
    std::printf("%d\n", status);
}

// Prints the allocations of warm calls; then one fails in the recorder, and one in the library.
void memory() {
    const auto round = [] {
        const Text image = "image" + Text(900, 'x');
        manager().registerSnapshotRequestRecord(image);
        manager().updateFrameInfo(image, 1, image, {1, 2}, 3);
        manager().updateNodeProcTime(image, image, 1, 2, 3);
        manager().updateSnapshotErrorInfo(image, image.c_str());
        manager().snapshotRequestInfoFlush(image, INFO_SYNC_TYPE_COLLECT);
        manager().unregisterSnapshotRequestRecord(image);
    };
    manager().updateAnchorFrame(Text(size_t{2} << 20U, 'x'), 1);  // whose memory is not kept
    round();
    round();
    constexpr int kPlenty = 1000000;
    allocations::left = kPlenty;
    round();
    std::printf("%d\n", kPlenty - allocations::left);
    try {
        allocations::left = 0;
        manager().registerSnapshotRequestRecord("short");
    } catch (const std::bad_alloc&) {
        allocations::left = -1;
        std::puts("bad_alloc");
    }
    Text unknown(100000, 'x');
    allocations::left = 0;
    manager().updateAnchorFrame(std::move(unknown), 1);
    allocations::left = -1;
    manager().updateAnchorFrame("after", 1);
}

void untouched() {
    std::filesystem::current_path("/");
    tenCalls();
    std::puts(InfoSynchronizer::mIntentAwareImpl == service().object ? "untouched" : "touched");
}

// The library closes the overlap library after the recorder's end.
void late() {
    static InfoSynchronizerManager* const lateManager = new InfoSynchronizerManager;
    service().end = [] {
        lateManager->request(static_cast<InfoSyncType>(7), nullptr, nullptr);
        std::puts("late");
    };
    tenCalls();
}

// The process ends while eight threads call.
void exiting() {
    static InfoSynchronizerManager* const lateManager = new InfoSynchronizerManager;
    static std::atomic<int> calls{0};
    for (int i = 0; i < 8; ++i) {
        std::thread([] {
            for (;; ++calls) {
                lateManager->request(static_cast<InfoSyncType>(7), nullptr, nullptr);
            }
        }).detach();
    }
    while (calls < 1000) {
        std::this_thread::yield();
    }
}

// A HAL looks at errno after it has told the library that something failed.
void failing() {
    for (int i = 0; i < 10; ++i) {
        errno = EXDEV;
        manager().registerSnapshotRequestRecord("A");
        std::printf("%d\n", errno == EXDEV ? 1 : 0);
    }
}

}  // namespace

extern "C" __attribute__((visibility("default"))) int runHal(const char* what) {
    const std::map<Text, void (*)()> deeds = {
            {"everything", everything},
            {"order", order},
            {"held", held},
            {"stuck", stuck},
            {"nested", nested},
            {"load", load},
            {"turns", turns},
            {"parts", parts},
            {"many", many},
            {"huge", [] { manager().updateSnapshotErrorInfo("A", Text(1U << 26U, 'x').c_str()); }},
            {"tenCalls", tenCalls},
            {"forked", forked},
            {"memory", memory},
            {"untouched", untouched},
            {"late", late},
            {"exiting", exiting},
            {"failing", failing}};
    deeds.at(what)();
    return 0;
}

#ifdef INFOSYNC_TEST_LINKED
int main(int /*argc*/, char** argv) {
    return runHal(argv[1]);
}
#endif
