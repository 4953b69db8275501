// Many snapshots at once, each a whole life, checked by the reports that they gave.
//
//     infosync_stress [--snapshots N] [--flush-ms N] [--soak SECONDS]
//
// With INFOSYNC_HOST_PROPERTIES=persist.vendor.camera.infoSyncCollect.forceEnabled=1, since the
// answers of the service change all the time and none of them switches collection on.
//
// With GLIBC_TUNABLES as kExactHeap has it, the C library's own count of the heap in use is checked
// too; otherwise it includes what that library keeps for reuse.

#include <malloc.h>
#include <pthread.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <functional>
#include <iterator>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <zudebug/Log.h>

#include "Allocations.h"
#include "CallService.h"
#include "InfoSynchronizerManager.h"
#include "RecordModel.h"

namespace {

using namespace camInfosync;  // NOLINT(google-build-using-namespace)
using doubles::Call;
using Clock = std::chrono::steady_clock;
using Report = std::vector<Call>;

constexpr int kThreads = 8;

// No memory kept for each thread; the stacks of all threads kept, with their piece of heap.
constexpr char kExactHeap[] =
        "glibc.malloc.tcache_count=0:glibc.pthread.stack_cache_size=268435456";

const std::string kAnswers[] = {"short", "an answer that no small string holds", ""};

std::atomic<int> failures{0};

void expect(bool holds, const char* what) {
    if (!holds && ++failures <= 20) {
        std::printf("FAILED: %s\n", what);
    }
}

thread_local Report received;  // by the service, on this thread

class Service final : public doubles::CallService {
  public:
    int mFlushMs = 0;
    std::mutex mMutex;
    std::vector<Report> mReports;  // guarded by mMutex

  private:
    void receive(const Call& call) override {
        if (call[0] == "queryValue") {
            return;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(call[2] == "iso" ? mFlushMs : 0));
        received.push_back(call);
        if (call[0] == "finishReport") {
            std::lock_guard<std::mutex> lock(mMutex);
            mReports.push_back(std::exchange(received, {}));
        }
    }
    // Another answer to each question: collection must be forced on.
    std::string answerTo(const std::string& /*key*/) override { return kAnswers[mNext++ % 3]; }

    std::atomic<size_t> mNext{0};
};
Service service;

// The sums of a round.
struct Totals {
    Totals() {
        pthread_barrier_init(&mStart, nullptr, kThreads + 2);
        for (int i = 0; i < 100; ++i) {
            executors.emplace_back(INFO_SYNC_TYPE_CMD);
        }
    }
    ~Totals() { pthread_barrier_destroy(&mStart); }
    Totals(const Totals&) = delete;
    Totals& operator=(const Totals&) = delete;

    // Waits until all threads of the round run.
    void waitForAll() {
        // The C library gives a thread its own part of the heap at its first allocation, or one
        // that an ended thread has left. All allocate before any goes on, so that each round needs
        // as many parts as there are threads, and the heap of two rounds can be compared.
        operator delete(operator new(1));
        pthread_barrier_wait(&mStart);
    }

    std::deque<CmdExecutor> executors;  // that nobody has asked before the round
    std::mutex mutex;
    std::vector<std::string> marks;  // the image of each error put in; guarded by mutex
    std::atomic<int> residentFlushes{0};
    std::atomic<bool> done{false};

  private:
    pthread_barrier_t mStart;
};

InfoSynchronizerManager& manager() {
    return InfoSynchronizerManager::getInstance();
}

void flush(const std::string& name) {
    manager().snapshotRequestInfoFlush(name, INFO_SYNC_TYPE_COLLECT);
}

// Two images that stay registered during the round.
std::string residentName(int i) {
    return "resident-" + std::to_string(i % 2);
}

// Images that all threads register and unregister.
std::string contestedName(int i) {
    return "contested-" + std::to_string(i % 3);
}

std::string ownName(int thread, int i) {
    return "own-" + std::to_string(thread) + "-" + std::to_string(i);
}

void fill(const std::string& name, int i) {
    const auto n = static_cast<uint32_t>(i);
    manager().updateFrameInfo(name, n, std::to_string(i), {n % 4}, 1);
    manager().updateRequestInfo(name, 1, 2, true, 3, {4}, {10, 11});
    manager().updateUIInfo(name, REQUEST_TYPE_DEFAULT, 5, i % 3, 2.75F, "ui");
    manager().updateAnchor3aInfo(name, 1.5F, i, 100.0F, -i);
    manager().updateAnchorFrame(name, i);
    manager().updateVndResultInfo(name, {{9, "ready"}});
    manager().updateZuAlgoInfo(name, SnapshotInfo::ZuAlgoInfo{});
    manager().updateZuAlgoInfo(name, {"b:more", "a", "never"});
    for (uint32_t stage = 0; stage < 15; ++stage) {
        manager().updateSnapshotTimeInfo(name, stage);
    }
    manager().updateSnapshotTimeInfo(name, {{TimeStageToChar[7], i}});
    manager().updateNodeProcTime(name, "b", i + 0.5, 1, i + 1.5);
    manager().updateNodeProcState(name, {{"b", "OK"}});
    manager().updatePostProcInfo({{name, n}});
}

// Puts errors in, as `i` has it, and adds the image's name to `marks` for each that is listed.
void damage(const std::string& name, const std::string& node, int i,
            std::vector<std::string>& marks) {
    manager().updateVndResultInfo(name, 10, i % 5);
    manager().updateNodeProcTime(name, node, i, i % 7 == 0 ? -1.0 : 1.0, i + 2);
    manager().updateNodeProcState(name, node, i % 3);
    manager().updateSnapshotErrorInfo(name, "reported");
    marks.insert(marks.end(), (i % 5 != 0 ? 1 : 0) + (i % 7 == 0 ? 1 : 0) + (i % 3 != 0 ? 1 : 0),
                 name);
}

// The report on what fill() and damage() make of a snapshot.
Report ownReport(int thread, int i) {
    const auto n = static_cast<uint32_t>(i);
    RequestRecord record(REQUEST_TYPE_DEFAULT);
    record.frameInfo = {n, std::to_string(i), {n % 4}, 1, ownName(thread, i)};
    SnapshotInfo& info = record.snapshotInfo;
    info.camMode = 5;
    info.faceDetect = i % 3;
    info.zoomRatio = 2.75F;
    info.fstop = 1.5F;
    info.iso = i;
    info.lux = 100.0F;
    info.exposureTime = -i;
    info.zuAlgoInfo.algoTimeA = {{"a", i}, {"b", i + 0.5}, {"never", 0}};
    info.zuAlgoInfo.algoTimeC = {{"a", i + 2}, {"b", i + 1.5}};
    return fuzz::reportOn(record);
}

// What a report on a shared image must have, whoever wrote last: eight parameters first, the end
// last, and all of one id. A record that was flushed before its updateFrameInfo has an empty one.
bool isWhole(const Report& report) {
    const std::string& id = report[0][1];
    std::string kinds;
    for (const Call& call : report) {
        kinds += call[1] == id ? call[0][0] : '?';
    }
    const size_t events = std::max(report.size(), size_t{9}) - 9;
    return kinds == "ssssssss" + std::string(events, 'r') + "f" &&
           report.back() == Call{"finishReport", id, "1022", "10000"};
}

void checkLanded(const std::string& name, size_t errors) {
    RequestRecordQueue& queue = *manager().mRequestRecordQueue;
    std::lock_guard<std::mutex> lock(queue.mutex);
    const RequestRecord& record = *queue.records.at(name);
    expect(record.hasError && record.errorInfo.size() == errors + 1 &&
                   record.snapshotInfo.timeInfo.size() == 15 &&
                   record.snapshotInfo.vendorResultInfo.size() == 3,
           "the updates that grow a record have landed");
}

// Asks each executor for a key that all threads ask for, and for one of this thread's own. What is
// returned must be one of the answers, and still the same at the end.
void ask(std::deque<CmdExecutor>& executors, int thread) {
    std::vector<std::pair<const char*, std::string>> returned;
    for (CmdExecutor& executor : executors) {
        for (const std::string& key : {std::string("shared"), std::to_string(thread)}) {
            const auto* text = static_cast<const char*>(executor.requestCmd(key.c_str()));
            returned.emplace_back(text, text);
        }
    }
    for (const auto& [text, before] : returned) {
        expect(std::find(std::begin(kAnswers), std::end(kAnswers), before) != std::end(kAnswers),
               "what is returned is an answer");
        expect(text == before, "what was returned stays as it is");
    }
}

void leadLives(Totals& totals, int thread, int count) {
    totals.waitForAll();
    ask(totals.executors, thread);
    std::vector<std::string> marks;
    for (int i = 0; i < count; ++i) {
        const std::string own = ownName(thread, i);
        const std::string contested = contestedName(i);
        for (const std::string& name : {own, contested}) {
            manager().registerSnapshotRequestRecord(name);
            fill(name, i);
        }
        const size_t before = marks.size();
        damage(own, "a", i, marks);
        checkLanded(own, marks.size() - before);
        if (i % 4 == 0) {
            damage(residentName(i / 4), "node-" + std::to_string(thread), i / 4, marks);
            flush(residentName(i / 4));
            ++totals.residentFlushes;
        }
        for (const std::string& name : {own, contested}) {
            flush(name);
            manager().unregisterSnapshotRequestRecord(name);
        }
    }
    std::lock_guard<std::mutex> lock(totals.mutex);
    totals.marks.insert(totals.marks.end(), marks.begin(), marks.end());
}

// What other threads do meanwhile.
void disturb(Totals& totals) {
    totals.waitForAll();
    for (int i = 0; !totals.done; ++i) {
        manager().registerSnapshotRequestRecord(residentName(i));
        manager().unregisterSnapshotRequestRecord("unknown");
        manager().registerSnapshotRequestRecord(contestedName(i));
        manager().unregisterSnapshotRequestRecord(contestedName(i));
        manager().updatePostProcInfo({{"disturbed", 1}});
        flush("unknown");
        if (i % 64 == 0) {
            flush(residentName(i));
            ++totals.residentFlushes;
        }
        std::this_thread::yield();
    }
}

void checkReports(const Totals& totals, int count) {
    std::vector<int> own(kThreads);
    int residents = 0;
    for (const Report& report : service.mReports) {
        const std::string& image = report[0][1];
        int thread = 0;
        if (std::sscanf(image.c_str(), "own-%d", &thread) == 1) {
            expect(report == ownReport(thread, own.at(static_cast<size_t>(thread))++),
                   "snapshots of a thread's own give one report each, in order");
        } else {
            residents += image.rfind("resident-", 0) == 0 ? 1 : 0;
            expect(isWhole(report), "a report on a shared image is whole");
        }
    }
    expect(own == std::vector<int>(kThreads, count), "each snapshot of a thread's own is reported");
    expect(residents == totals.residentFlushes, "each flush of a known image gives one report");
}

// Checks what the round has left behind, and forgets it.
void checkAndForget(Totals& totals, int count) {
    RequestRecordQueue& queue = *manager().mRequestRecordQueue;
    std::sort(totals.marks.begin(), totals.marks.end());
    std::sort(queue.errorImageNames.begin(), queue.errorImageNames.end());
    expect(totals.marks == queue.errorImageNames, "failure marks add up to the errors put in");
    expect(queue.records.empty(), "the queue is empty");
    checkReports(totals, count);
    std::vector<std::string>().swap(queue.errorImageNames);
    std::vector<Report>().swap(service.mReports);
    queue.postProcInfo.clear();
}

// Each thread leads `count` lives on images of its own and as many on contested ones. Returns
// the seconds that this took.
double runRound(int count) {
    Totals totals;
    for (int i = 0; i < 2; ++i) {
        manager().registerSnapshotRequestRecord(residentName(i));
        manager().updateFrameInfo(residentName(i), 1, "1", {}, 1);
    }
    const auto begin = Clock::now();
    std::thread others[] = {std::thread(disturb, std::ref(totals)),
                            std::thread(disturb, std::ref(totals))};
    std::thread lives[kThreads];
    for (int i = 0; i < kThreads; ++i) {
        lives[i] = std::thread(leadLives, std::ref(totals), i, count);
    }
    std::for_each(std::begin(lives), std::end(lives), [](std::thread& life) { life.join(); });
    const std::chrono::duration<double> seconds = Clock::now() - begin;
    totals.done = true;
    std::for_each(std::begin(others), std::end(others), [](std::thread& other) { other.join(); });
    manager().unregisterSnapshotRequestRecord(residentName(0));
    manager().unregisterSnapshotRequestRecord(residentName(1));
    checkAndForget(totals, count);
    return seconds.count();
}

int option(int argc, char** argv, const char* name, int fallback) {
    for (int i = 1; i + 1 < argc; i += 2) {
        fallback = std::strcmp(argv[i], name) == 0 ? std::atoi(argv[i + 1]) : fallback;
    }
    return fallback;
}

}  // namespace

int main(int argc, char** argv) {
    const int snapshots = option(argc, argv, "--snapshots", 4000);
    const Clock::duration soak = std::chrono::seconds(option(argc, argv, "--soak", 0));
    InfoSynchronizer::mIntentAwareImpl = &service;
    zudebug::gZuCamLogLevel = INT32_MAX;

    const int round = std::clamp(snapshots / (2 * kThreads), 1, 125);
    runRound(round);
    const char* tunables = std::getenv("GLIBC_TUNABLES");
    const bool exactHeap = tunables != nullptr && std::strcmp(tunables, kExactHeap) == 0;
    service.mFlushMs = option(argc, argv, "--flush-ms", 0);
    const long warm = allocations::inUse();
    const size_t warmHeap = mallinfo2().uordblks;
    int led = 0;
    double seconds = 0;
    for (const auto begin = Clock::now(); led < snapshots || Clock::now() - begin < soak;) {
        seconds += runRound(round);
        led += 2 * kThreads * round;
        expect(allocations::inUse() == warm, "allocations are balanced");
    }
    const size_t heap = mallinfo2().uordblks;
    expect(!exactHeap || heap == warmHeap, "the heap does not grow");
    std::printf(
            "%d snapshots, %.0f per second, heap in use after warm-up %zu, at the end %zu bytes\n",
            led, led / seconds, warmHeap, heap);
    return failures != 0 ? 1 : 0;
}
