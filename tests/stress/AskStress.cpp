// First questions, new keys and changing answers, from many threads at once, while snapshots are
// registered, flushed and removed: infosync_ask_stress [EXECUTORS]
//
// To be run with collection forced on, since the answers are not "enabled".

#include <pthread.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <set>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <zudebug/Log.h>

#include "InfoSynchronizerManager.h"
#include "ServiceBase.h"

namespace {

using namespace camInfosync;  // NOLINT(google-build-using-namespace)

constexpr unsigned kThreads = 8;
constexpr int kQuestions = 50;  // of each thread to each executor

const std::string kAnswers[] = {"short", "an answer that does not fit into a small string", ""};

// Answers each question otherwise than the one before.
class Service final : public ServiceBase {
  public:
    void setParam(const std::string&, const std::string&, const std::string&) override {}
    void reportEvent(const std::string&, const std::string&) override {}
    void finishReport(std::string, int32_t, int32_t) override { ++reports; }
    std::string queryValue(std::string) override { return kAnswers[mNext++ % 3]; }

    std::atomic<int> reports{0};

  private:
    std::atomic<size_t> mNext{0};
};

std::atomic<int> failures{0};

void expect(bool holds, const char* what) {
    if (!holds && ++failures <= 20) {
        std::printf("FAILED: %s\n", what);
    }
}

// Asks for a key that all threads ask for, and for one of its own. What was returned must be one
// of the answers, and still the same at the end.
void ask(CmdExecutor& executor, unsigned thread, pthread_barrier_t& start) {
    const std::string keys[] = {"shared", "key " + std::to_string(thread)};
    std::vector<std::pair<const char*, std::string>> returned;
    pthread_barrier_wait(&start);
    for (int i = 0; i < kQuestions; ++i) {
        const auto* text = static_cast<const char*>(executor.requestCmd(keys[i % 2].c_str()));
        returned.emplace_back(text, text);
    }
    const std::set<std::string> answers(std::begin(kAnswers), std::end(kAnswers));
    for (const auto& [text, before] : returned) {
        expect(answers.count(before) == 1, "an answer is the service's");
        expect(text == before, "a text that was returned stays as it is");
    }
}

// What the pipeline does meanwhile; each flush asks, too.
void leadSnapshots(const std::atomic<bool>& done, std::atomic<int>& flushed) {
    InfoSynchronizerManager& manager = InfoSynchronizerManager::getInstance();
    while (!done) {
        manager.registerSnapshotRequestRecord("IMG");
        manager.snapshotRequestInfoFlush("IMG", INFO_SYNC_TYPE_COLLECT);
        manager.unregisterSnapshotRequestRecord("IMG");
        ++flushed;
    }
}

void askFreshExecutor() {
    CmdExecutor executor(INFO_SYNC_TYPE_CMD);
    pthread_barrier_t start;
    pthread_barrier_init(&start, nullptr, kThreads);
    std::vector<std::thread> threads;
    for (unsigned i = 0; i < kThreads; ++i) {
        threads.emplace_back([&executor, i, &start] { ask(executor, i, start); });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    pthread_barrier_destroy(&start);
}

}  // namespace

int main(int argc, char** argv) {
    const int executors = argc > 1 ? std::atoi(argv[1]) : 100;
    Service service;
    InfoSynchronizer::mIntentAwareImpl = &service;
    zudebug::gZuCamLogLevel = INT32_MAX;
    std::atomic<bool> done{false};
    std::atomic<int> flushed{0};
    std::thread pipeline(leadSnapshots, std::cref(done), std::ref(flushed));
    for (int i = 0; i < executors; ++i) {
        askFreshExecutor();
    }
    done = true;
    pipeline.join();
    expect(service.reports == flushed, "each flush of a registered image is reported");
    std::printf("%d executors, %d snapshots meanwhile\n", executors, flushed.load());
    return failures != 0 ? 1 : 0;
}
