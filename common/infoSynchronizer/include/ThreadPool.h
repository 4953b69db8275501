// A small pool of background threads at a lowered priority.

#pragma once

#include <array>
#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "Export.h"
#include "ThreadAnnotations.h"

namespace camInfosync {

// Runs tasks first in, first out. Workers are named "InfoSyncThread" and their index, of which
// the kernel keeps 15 characters: the workers 1 and 10 to 19 share a name. They run in the task
// profile "SCHED_SP_BACKGROUND".
//
// Thread safety: enqueue and setThreadPoolPriority may be called from any thread, also from a
// task. Once the destructor has begun, only tasks may call. A task must not destroy its pool, nor
// end the process: both wait for the task.
class INFOSYNC_EXPORT ThreadPool {
  public:
    // Starts `threadCount` workers with the nice value `priority`. A nice value that the process
    // has no right to set, as a lower one usually is, stays without effect and without a word,
    // here and in setThreadPoolPriority. If a worker cannot be
    // started, those already running are stopped and joined, and std::system_error (its text
    // begins "thread constructor failed") or std::bad_alloc leaves the constructor.
    ThreadPool(unsigned int threadCount, int priority);

    // Refuses new tasks, lets the workers finish those that are queued, and joins them. A pool
    // without workers drops its tasks; what a dropped task owns must not call the pool.
    ~ThreadPool();
    ThreadPool(const ThreadPool&) = delete;
    ThreadPool& operator=(const ThreadPool&) = delete;

    // Starts one more worker. Takes no lock: only for the time before the pool is shared.
    // Throws as the constructor does; the pool is then as before, less an index.
    void addThread();

    // Queues a task. Returns 0, or -1 without effect once the destructor has begun. Logs a
    // warning, with the pool's mutex held, while the last ten calls found no task taken since. A
    // task that throws, an empty one included, ends the process. std::bad_alloc passes; the task is
    // not queued then.
    int enqueue(std::function<void()> task) INFOSYNC_EXCLUDES(mMutex);

    // Sets the nice value that each worker applies before it takes its next task.
    void setThreadPoolPriority(int priority) INFOSYNC_EXCLUDES(mMutex);

  private:
    INFOSYNC_LOCAL explicit ThreadPool(int priority);
    INFOSYNC_LOCAL void loop(int32_t index, const std::vector<std::string>& profiles)
            INFOSYNC_EXCLUDES(mMutex);

    std::map<int32_t, std::thread> mThreads;  // by index; changed only before the pool is shared
    std::deque<std::function<void()>> mTasks INFOSYNC_GUARDED_BY(mMutex);
    std::mutex mMutex;
    std::condition_variable mCondition;  // with mMutex: a task was queued, or the pool stops
    bool mStop INFOSYNC_GUARDED_BY(mMutex) = false;
    std::atomic<int32_t> mNextThreadIndex{0};
    int32_t mPriority INFOSYNC_GUARDED_BY(mMutex);
    int32_t mEnqueueIndex INFOSYNC_GUARDED_BY(mMutex) = -1;  // ring position last queued at
    // 1: a task was queued at this position; -1: a task was taken after that.
    std::array<int32_t, 10> mEnqueueMarks INFOSYNC_GUARDED_BY(mMutex){};
};

}  // namespace camInfosync
