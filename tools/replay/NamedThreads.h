// The threads that a capture log names.

#pragma once

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <exception>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <thread>

namespace replay {

// Runs each task on the thread of its name, in order within that thread. What waits is limited
// for all threads together.
//
// Thread safety: one thread, and none of the named ones, calls everything here.
class NamedThreads {
  public:
    NamedThreads() = default;
    // Waits for all tasks.
    ~NamedThreads();
    NamedThreads(const NamedThreads&) = delete;
    NamedThreads& operator=(const NamedThreads&) = delete;

    // Queues a task; a new name starts a thread. `size` is what the task counts for in the
    // limit. Blocks while that would be passed. Throws std::system_error without a thread.
    void post(const std::string& name, size_t size, std::function<void()> task);

    // Waits until all tasks are done. Throws what a task has thrown; tasks after it were run.
    void wait();

  private:
    struct Task {
        size_t size;
        std::function<void()> run;
    };
    struct Worker {
        std::deque<Task> tasks;  // guarded by mMutex
        std::condition_variable wake;
        std::thread thread;
    };

    void loop(Worker& worker);

    std::mutex mMutex;
    std::condition_variable mTaskDone;
    size_t mWaiting = 0;            // guarded by mMutex: sizes of the tasks not yet done
    size_t mTasks = 0;              // guarded by mMutex: their number
    bool mStop = false;             // guarded by mMutex
    std::exception_ptr mException;  // guarded by mMutex: the first one
    std::map<std::string, Worker> mWorkers;
};

}  // namespace replay
