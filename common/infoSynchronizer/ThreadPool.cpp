#include "ThreadPool.h"

#include <sys/prctl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cstdio>
#include <numeric>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include <processgroup/processgroup.h>

#include "Log.h"

namespace camInfosync {
namespace {

constexpr char kLogTag[] = "ZuAlgoEngine";

}  // namespace

ThreadPool::ThreadPool(int priority) : mPriority(priority) {}

// The object counts as constructed once the first constructor is done: if a worker cannot be
// started after that, the destructor stops and joins those already running.
ThreadPool::ThreadPool(unsigned int threadCount, int priority) : ThreadPool(priority) {
    for (unsigned int i = 0; i < threadCount; ++i) {
        addThread();
    }
}

ThreadPool::~ThreadPool() {
    {
        std::lock_guard<std::mutex> lock(mMutex);
        mStop = true;
    }
    mCondition.notify_all();
    for (auto& [index, thread] : mThreads) {
        thread.join();
    }
}

void ThreadPool::addThread() {
    const int32_t index = mNextThreadIndex.fetch_add(1);
    if (mThreads.count(index) != 0) {
        return;
    }
    // The entry is made before its thread: nothing that can fail may follow the thread's start.
    std::map<int32_t, std::thread> started;
    std::thread& thread = started[index];
    try {
        // The profiles are made here: on the worker, nobody could be told that memory has ended.
        thread = std::thread(&ThreadPool::loop, this, index,
                             std::vector<std::string>{"SCHED_SP_BACKGROUND"});
    } catch (const std::system_error& error) {
        // The standard libraries word this differently.
        throw std::system_error(error.code(), "thread constructor failed");
    }
    mThreads.merge(started);
}

int ThreadPool::enqueue(std::function<void()> task) {
    {
        std::lock_guard<std::mutex> lock(mMutex);
        if (mStop) {
            return -1;
        }
        const auto ringSize = static_cast<int32_t>(mEnqueueMarks.size());
        mEnqueueIndex = (mEnqueueIndex + 1) % ringSize;
        mEnqueueMarks[static_cast<size_t>(mEnqueueIndex)] = 1;
        if (std::accumulate(mEnqueueMarks.begin(), mEnqueueMarks.end(), 0) == ringSize) {
            // Deliberate: two blanks, none after the comma, and the size without the new task.
            INFOSYNC_LOGW(site::kPoolPileUp,
                          "[ThreadPool]: thread consume slowly or  blocking,task queue size %d",
                          static_cast<int>(mTasks.size()));
        }
        mTasks.push_back(std::move(task));
    }
    mCondition.notify_one();
    return 0;
}

void ThreadPool::setThreadPoolPriority(int priority) {
    std::lock_guard<std::mutex> lock(mMutex);
    mPriority = priority;
}

// The analysis cannot follow a std::unique_lock, which the condition variable needs. The lock
// is held throughout, except where `lock` says otherwise.
void ThreadPool::loop(int32_t index,
                      const std::vector<std::string>& profiles) INFOSYNC_NO_THREAD_SAFETY_ANALYSIS {
    char name[32];
    snprintf(name, sizeof(name), "InfoSyncThread%d", index);
    prctl(PR_SET_NAME, name);
    SetTaskProfiles(gettid(), profiles, true);

    std::unique_lock<std::mutex> lock(mMutex);
    int32_t appliedPriority = mPriority;
    setpriority(PRIO_PROCESS, 0, appliedPriority);
    while (true) {
        mCondition.wait(lock, [this]() INFOSYNC_NO_THREAD_SAFETY_ANALYSIS {
            return mStop || !mTasks.empty();
        });
        if (mTasks.empty()) {
            return;  // stopped, and drained
        }
        if (mPriority != appliedPriority) {
            appliedPriority = mPriority;
            setpriority(PRIO_PROCESS, 0, appliedPriority);
        }
        std::function<void()> task = std::move(mTasks.front());
        mTasks.pop_front();
        // Deliberate: marks the position last queued at, not that of the task taken. It is not -1
        // here: whoever queued the task has moved it on.
        mEnqueueMarks[static_cast<size_t>(mEnqueueIndex)] = -1;
        lock.unlock();
        task();
        task = nullptr;  // what the task owns must not be destroyed under the lock
        lock.lock();
    }
}

}  // namespace camInfosync
