// What does not belong to a snapshot: one log statement, and handing a task to the worker pool.

#include <spdlog/pattern_formatter.h>
#include <spdlog/sinks/base_sink.h>
#include <spdlog/spdlog.h>

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>

#include "Bench.h"
#include "Log.h"
#include "ThreadPool.h"

namespace {

constexpr char kLogTag[] = "benchmark";

// Formats each line and drops it, as this program's Android log does.
class DroppingSink final : public spdlog::sinks::base_sink<std::mutex> {
    void sink_it_(const spdlog::details::log_msg& message) override {
        spdlog::memory_buf_t line;
        formatter_->format(message, line);
        benchmark::DoNotOptimize(line.data());
    }
    void flush_() override {}
};

uint64_t argumentsEvaluated = 0;

const char* countedArgument() {
    ++argumentsEvaluated;
    return "IMG_2000000";
}

void emptyLoop(benchmark::State& state) {
    const CountedState counted(state);
    for (auto _ : state) {
        benchmark::ClobberMemory();
    }
}

// Fails unless the argument is evaluated `perLine` times for each line.
void logLine(benchmark::State& state, uint64_t perLine) {
    argumentsEvaluated = 0;
    {
        const CountedState counted(state);
        for (auto _ : state) {
            INFOSYNC_LOGI(INFOSYNC_HERE("logLine"), "flush image %s  queue size: %d",
                          countedArgument(), 5);
            benchmark::ClobberMemory();
        }
    }
    if (argumentsEvaluated != perLine * state.iterations()) {
        state.SkipWithError("the argument was evaluated a wrong number of times");
    }
}

void logLineShut(benchmark::State& state) {
    logLine(state, 0);
}

void logLineToAndroid(benchmark::State& state) {
    const uint32_t group = zudebug::gZuCamLogGroup;
    const int32_t level = zudebug::gZuCamLogLevel;
    zudebug::gZuCamLogGroup = camInfosync::logging::kGroup;
    zudebug::gZuCamLogLevel = ANDROID_LOG_INFO;
    logLine(state, 1);
    zudebug::gZuCamLogGroup = group;
    zudebug::gZuCamLogLevel = level;
}

void logLineByHand(benchmark::State& state, spdlog::level::level_enum level) {
    spdlog::logger logger("benchmark", std::make_shared<DroppingSink>());
    logger.set_level(level);
    const CountedState counted(state);
    for (auto _ : state) {
        logger.info("flush image {}  queue size: {}", countedArgument(), 5);
        benchmark::ClobberMemory();
    }
}

// The pool as it is usually written: one worker, a queue, a mutex and a condition.
class HandWrittenPool {
  public:
    HandWrittenPool() : mThread([this] { loop(); }) {}
    ~HandWrittenPool() {
        {
            std::lock_guard<std::mutex> lock(mMutex);
            mStop = true;
        }
        mCondition.notify_all();
        mThread.join();
    }
    void enqueue(std::function<void()> task) {
        {
            std::lock_guard<std::mutex> lock(mMutex);
            mTasks.push_back(std::move(task));
        }
        mCondition.notify_one();
    }

  private:
    void loop() {
        std::unique_lock<std::mutex> lock(mMutex);
        while (true) {
            mCondition.wait(lock, [this] { return mStop || !mTasks.empty(); });
            if (mTasks.empty()) {
                return;
            }
            std::function<void()> task = std::move(mTasks.front());
            mTasks.pop_front();
            lock.unlock();
            task();
            lock.lock();
        }
    }

    std::mutex mMutex;
    std::condition_variable mCondition;
    std::deque<std::function<void()>> mTasks;
    bool mStop = false;
    std::thread mThread;
};

// The caller's part; one worker takes the tasks meanwhile.
template <typename Pool, typename... Arguments>
void enqueue(benchmark::State& state, Arguments... arguments) {
    std::atomic<int64_t> done{0};
    {
        Pool pool(arguments...);
        const CountedState counted(state);
        for (auto _ : state) {
            pool.enqueue([&done] { done.fetch_add(1, std::memory_order_relaxed); });
        }
    }
    if (done != static_cast<int64_t>(state.iterations())) {
        state.SkipWithError("the pool did not run all tasks");
    }
}

}  // namespace

void registerPlatform() {
    using benchmark::RegisterBenchmark;
    RegisterBenchmark("empty_loop", emptyLoop);
    RegisterBenchmark("infosync/log_line/shut", logLineShut);
    RegisterBenchmark("infosync/log_line/android", logLineToAndroid);
    RegisterBenchmark("by_hand/log_line/shut",
                      [](auto& state) { logLineByHand(state, spdlog::level::off); });
    RegisterBenchmark("by_hand/log_line/android",
                      [](auto& state) { logLineByHand(state, spdlog::level::info); });
    RegisterBenchmark("infosync/enqueue",
                      [](auto& state) { enqueue<camInfosync::ThreadPool>(state, 1U, 10); });
    RegisterBenchmark("by_hand/enqueue", [](auto& state) { enqueue<HandWrittenPool>(state); });
}
