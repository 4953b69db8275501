// The pool of background threads. Waiting is by promises, with one exception.

#include <pthread.h>
#include <unistd.h>

#include <chrono>
#include <deque>
#include <functional>
#include <future>
#include <set>
#include <stdexcept>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include "Doubles.h"
#include "ThreadPool.h"

namespace camInfosync {
namespace {

// The calling thread's name, nice value and task profiles.
std::string facts() {
    char name[16] = "";
    pthread_getname_np(pthread_self(), name, sizeof(name));
    return std::string(name) + " " + std::to_string(doubles::nice) + " " + doubles::profiles;
}

// A task that tells the facts of its worker and keeps it until it is released.
class Blocker {
  public:
    explicit Blocker(ThreadPool& pool) {
        pool.enqueue([state = mState] {
            state->told.set_value(facts());
            state->released.get_future().wait();
        });
    }
    std::string started() { return mState->told.get_future().get(); }
    void release() { mState->released.set_value(); }

  private:
    struct State {
        std::promise<std::string> told;
        std::promise<void> released;
    };
    const std::shared_ptr<State> mState = std::make_shared<State>();
};

std::string askWorker(ThreadPool& pool) {
    Blocker blocker(pool);
    blocker.release();
    return blocker.started();
}

void enqueueIdle(ThreadPool& pool, int count) {
    for (int i = 0; i < count; ++i) {
        EXPECT_EQ(pool.enqueue([] {}), 0);
    }
}

class Pool : public doubles::Test {};

TEST_F(Pool, WorkersAreNamedAndRunInTheBackground) {
    ThreadPool pool(12, 7);
    std::deque<Blocker> blockers;
    for (int i = 0; i < 12; ++i) {
        blockers.emplace_back(pool);
    }
    std::multiset<std::string> workers;  // of a name of 16 characters the last is cut off
    for (Blocker& blocker : blockers) {
        workers.insert(blocker.started());
    }
    doubles::takeJournal();  // whether it warned is chance
    doubles::note("workers", workers);
    for (Blocker& blocker : blockers) {
        blocker.release();
    }
}

TEST_F(Pool, NewPriorityIsAppliedBeforeTheNextTask) {
    for (int i = 0; i < 50; ++i) {  // meets the workers' start, which the thread sanitizer sees
        ThreadPool starting(2, 10);
        starting.setThreadPoolPriority(11);
    }
    ThreadPool pool(1, 10);
    doubles::note(askWorker(pool));
    for (const int priority : {19, 5}) {
        pool.setThreadPoolPriority(priority);
        doubles::note(askWorker(pool));
    }
}

TEST_F(Pool, RunsTasksInOrderAndDrainsThemBeforeItsEnd) {
    ThreadPool pool(1, 0);
    Blocker blocker(pool);
    for (int i = 0; i < 5; ++i) {
        pool.enqueue([i] { doubles::note("task", i); });
    }
    doubles::note("released");
    blocker.release();
}

TEST_F(Pool, RefusesTasksOnceItStops) {
    int accepted = 0;
    int ran = 0;
    int last = 0;
    {
        ThreadPool pool(1, 0);
        pool.enqueue([&] {
            // Until the destructor, which runs meanwhile, has stopped the pool.
            const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
            while (last == 0 && std::chrono::steady_clock::now() < deadline) {
                last = pool.enqueue([&ran] { ++ran; });
                accepted += last == 0 ? 1 : 0;
                std::this_thread::yield();
            }
        });
    }
    EXPECT_EQ(last, -1);
    EXPECT_EQ(ran, accepted);
    doubles::takeJournal();  // how often it warned is chance
}

TEST_F(Pool, WithoutWorkersDropsItsTasks) {
    const auto task = std::make_shared<int>();
    ThreadPool(0, 0).enqueue([task] { ++*task; });
    EXPECT_EQ(*task, 0);
    EXPECT_EQ(task.use_count(), 1);
}

TEST_F(Pool, WarnsWhileTenCallsInARowFoundNoTaskTaken) {
    ThreadPool pool(1, 0);
    for (int i = 0; i < 3; ++i) {
        askWorker(pool);  // so that no position that counts is the ring's first
    }
    Blocker first(pool);
    first.started();
    Blocker second(pool);
    enqueueIdle(pool, 8);
    doubles::note("the tenth:");
    enqueueIdle(pool, 1);
    first.release();
    second.started();
    // Taking the second has marked the newest position, the tenth call's. Had it marked the second
    // one's own, the next call would be the tenth in a row again.
    enqueueIdle(pool, 9);
    doubles::note("the tenth since, and the eleventh:");
    enqueueIdle(pool, 2);
    second.release();
}

TEST_F(Pool, CountsFromTheFirstCall) {
    ThreadPool pool(0, 0);
    enqueueIdle(pool, 9);
    doubles::note("the tenth:");
    enqueueIdle(pool, 1);
}

TEST_F(Pool, OperationsTakeTheMutex) {
    auto pool = std::make_unique<ThreadPool>(0, 0);
    EXPECT_EQ(doubles::locksOf(nullptr, [&] { pool->enqueue([] {}); }), 1);
    EXPECT_EQ(doubles::locksOf(nullptr, [&] { pool->setThreadPoolPriority(1); }), 1);
    EXPECT_EQ(doubles::locksOf(nullptr, [&] { pool.reset(); }), 1);
}

TEST_F(Pool, TasksMayQueueTasksAlsoWhileTheyAreDestroyed) {
    std::promise<int> queued;
    std::promise<int> destroyed;
    ThreadPool pool(1, 0);
    std::shared_ptr<void> last(nullptr, [&](void*) { destroyed.set_value(pool.enqueue([] {})); });
    pool.enqueue([&, owner = std::move(last)] { queued.set_value(pool.enqueue([] {})); });
    EXPECT_EQ(queued.get_future().get(), 0);
    EXPECT_EQ(destroyed.get_future().get(), 0);
}

TEST_F(Pool, TaskThatThrowsEndsTheProcess) {
    const auto run = [](std::function<void()> task) {
        ThreadPool pool(1, 0);
        pool.enqueue(std::move(task));
    };
    EXPECT_DEATH(run([] { throw std::runtime_error("from the task"); }), "from the task");
    EXPECT_DEATH(run(nullptr), "bad_function_call");
}

TEST_F(Pool, FailedThreadStopsAndJoinsTheOthers) {
    for (int started = 0; started < 3; ++started) {
        doubles::threadsLeft = started;
        try {
            const ThreadPool pool(3, 0);
            ADD_FAILURE() << "no exception";
        } catch (const std::system_error& error) {
            EXPECT_EQ(std::string(error.what()).rfind("thread constructor failed", 0), 0U);
            EXPECT_EQ(error.code(), std::errc::resource_unavailable_try_again);
        }
    }
    doubles::threadsLeft = 1;
    ThreadPool pool(1, 0);
    EXPECT_THROW(pool.addThread(), std::system_error);
    doubles::note(askWorker(pool));  // the pool is as before
}

}  // namespace
}  // namespace camInfosync
