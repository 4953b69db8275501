// Tasks on named threads: what is limited, and what an exception does.

#include "NamedThreads.h"

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <mutex>
#include <stdexcept>
#include <string>

#include <gtest/gtest.h>

namespace {

using replay::NamedThreads;

constexpr size_t kLimit = size_t{1} << 20;

TEST(NamedThreads, HoldsBackTheCallerAtTheLimitOfAllThreads) {
    std::mutex mutex;
    std::condition_variable posting;
    int posted = 0;
    bool tooMany = false;
    NamedThreads threads;
    const auto block = [&] {  // until the caller is at the limit; a while longer, it may pass it
        std::unique_lock<std::mutex> lock(mutex);
        posting.wait(lock, [&] { return posted >= 4; });
        tooMany =
                posting.wait_for(lock, std::chrono::milliseconds(100), [&] { return posted > 4; });
    };
    const auto post = [&](const char* name, size_t size, const auto& task) {
        threads.post(name, size, task);
        const std::lock_guard<std::mutex> lock(mutex);
        ++posted;
        posting.notify_one();
    };
    post("a", 2 * kLimit, [] {});  // alone, it may be larger
    threads.wait();
    post("a", kLimit / 2, block);
    post("b", 0, [] {});
    post("a", kLimit / 2, [] {});  // just fits
    post("b", 1, [] {});
    threads.wait();
    EXPECT_EQ(5, posted);
    EXPECT_FALSE(tooMany);
}

TEST(NamedThreads, GivesTheFirstExceptionToTheOneThatWaits) {
    int done = 0;
    NamedThreads threads;
    threads.post("a", 1, [] { throw std::runtime_error("first"); });
    threads.post("a", 1, [] { throw std::logic_error("second"); });
    threads.post("a", 1, [&] { ++done; });
    EXPECT_THROW(threads.wait(), std::runtime_error);
    EXPECT_EQ(1, done);
    EXPECT_NO_THROW(threads.wait());
}

TEST(NamedThreads, EndsTheOneOf65ThatHasRestedLongest) {
    NamedThreads threads;
    const auto tasksOf = [&](int key) {  // with one more
        int tasks = 0;
        threads.post(std::to_string(key), 1, [&] {
            thread_local int done = 0;
            tasks = ++done;
        });
        threads.wait();
        return tasks;
    };
    for (int key = 0; key < 64; ++key) {
        EXPECT_EQ(1, tasksOf(key));
    }
    EXPECT_EQ(2, tasksOf(0));
    EXPECT_EQ(1, tasksOf(64));
    EXPECT_EQ(3, tasksOf(0));
    EXPECT_EQ(2, tasksOf(2));
    EXPECT_EQ(1, tasksOf(1));
}

TEST(NamedThreads, DoesAllTasksBeforeItEnds) {
    int done = 0;
    {
        NamedThreads threads;
        for (int i = 0; i < 1000; ++i) {
            threads.post("a", 1, [&] { ++done; });
        }
    }
    EXPECT_EQ(1000, done);
}

}  // namespace
