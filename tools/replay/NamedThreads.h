// The threads that a capture log names.

#pragma once

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <exception>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <thread>

namespace replay {

// Runs each task on the thread of its key, in order within that thread. What waits is limited
// for all threads together. A task may pause; what is posted to its thread meanwhile runs within
// it. Beyond 64 threads, one is started once one with nothing to do has been ended.
//
// Thread safety: one thread, and none of these, calls everything here but `pause`.
class NamedThreads {
  public:
    NamedThreads() = default;
    // Waits for all tasks; none stays paused.
    ~NamedThreads();
    NamedThreads(const NamedThreads&) = delete;
    NamedThreads& operator=(const NamedThreads&) = delete;

    // Queues a task; a new key starts a thread. `size` is what the task counts for in the limit.
    // Blocks while that would be passed, unless a task is paused: what ends its pause may be yet
    // to come. Throws std::system_error without a thread.
    void post(const std::string& key, size_t size, std::function<void()> task);

    // Waits until the thread has done all its tasks, or the last one pauses.
    void waitForRest(const std::string& key);

    // Waits until all tasks are done; none stays paused. Throws what a task has thrown; tasks
    // after it were run.
    void wait();

    // Called by a task: returns once `isOver` says so, which it is asked now and after each task
    // that was run meanwhile, or once somebody waits for all tasks.
    void pause(const std::function<bool()>& isOver);

  private:
    struct Task {
        size_t size;
        std::function<void()> run;
    };
    struct Worker {
        std::deque<Task> tasks;  // this and the next two: guarded by mMutex
        bool resting = false;    // waits for a task
        bool stop = false;
        bool paused = false;  // within a task
        uint64_t lastPost = 0;
        std::condition_variable wake;
        std::thread thread;
    };

    void start(const std::string& key, Worker& worker);
    void endIdle();
    void loop(Worker& worker);
    bool waitForTask(Worker& worker, std::unique_lock<std::mutex>& lock,
                     const std::function<bool()>& isOver);
    void runNext(Worker& worker, std::unique_lock<std::mutex>& lock);

    std::mutex mMutex;
    std::condition_variable mRest;
    size_t mWaiting = 0;            // guarded by mMutex: sizes of the tasks not yet done
    size_t mTasks = 0;              // guarded by mMutex: their number
    size_t mPaused = 0;             // guarded by mMutex: of them, those that pause
    bool mNoPause = false;          // guarded by mMutex: somebody waits for all tasks
    std::exception_ptr mException;  // guarded by mMutex: the first one
    uint64_t mPosts = 0;
    std::map<std::string, Worker> mWorkers;
};

}  // namespace replay
