#include "NamedThreads.h"

#include <cstddef>
#include <exception>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <utility>

namespace replay {
namespace {

constexpr size_t kMostWaiting = size_t{1} << 20;
constexpr size_t kMostThreads = 64;

// The NamedThreads' worker that the calling thread is, a NamedThreads::Worker*.
thread_local void* current = nullptr;

}  // namespace

NamedThreads::~NamedThreads() {
    {
        const std::lock_guard<std::mutex> lock(mMutex);
        mNoPause = true;
        for (auto& [key, worker] : mWorkers) {
            worker.stop = true;
            worker.wake.notify_one();
        }
    }
    for (auto& [key, worker] : mWorkers) {
        if (worker.thread.joinable()) {
            worker.thread.join();
        }
    }
}

void NamedThreads::post(const std::string& key, size_t size, std::function<void()> task) {
    Worker& worker = mWorkers[key];
    if (!worker.thread.joinable()) {
        start(key, worker);
    }
    worker.lastPost = ++mPosts;
    std::unique_lock<std::mutex> lock(mMutex);
    mRest.wait(lock,
               [&] { return mTasks == 0 || mPaused != 0 || mWaiting + size <= kMostWaiting; });
    worker.tasks.push_back({size, std::move(task)});
    mWaiting += size;
    ++mTasks;
    worker.wake.notify_one();
}

void NamedThreads::start(const std::string& key, Worker& worker) {
    if (mWorkers.size() > kMostThreads) {
        endIdle();
    }
    try {
        worker.thread = std::thread([this, &worker] { loop(worker); });
    } catch (...) {
        mWorkers.erase(key);
        throw;
    }
}

// Ends the thread that has had nothing to do for the longest time, once there is one. There may
// never be one if each of them is paused.
void NamedThreads::endIdle() {
    auto idle = mWorkers.end();
    {
        std::unique_lock<std::mutex> lock(mMutex);
        bool someRun = false;
        mRest.wait(lock, [&] {
            someRun = false;
            for (auto worker = mWorkers.begin(); worker != mWorkers.end(); ++worker) {
                const Worker& candidate = worker->second;
                const bool rests = candidate.resting && candidate.tasks.empty();
                someRun = someRun || (candidate.thread.joinable() && !rests);
                if (rests && !candidate.paused &&
                    (idle == mWorkers.end() || candidate.lastPost < idle->second.lastPost)) {
                    idle = worker;
                }
            }
            return idle != mWorkers.end() || !someRun;
        });
        if (idle == mWorkers.end()) {
            return;
        }
        idle->second.stop = true;
        idle->second.wake.notify_one();
    }
    idle->second.thread.join();
    mWorkers.erase(idle);
}

void NamedThreads::waitForRest(const std::string& key) {
    const Worker& worker = mWorkers.at(key);
    std::unique_lock<std::mutex> lock(mMutex);
    mRest.wait(lock, [&] { return worker.tasks.empty() && worker.resting; });
}

void NamedThreads::wait() {
    std::unique_lock<std::mutex> lock(mMutex);
    mNoPause = true;
    for (auto& [key, worker] : mWorkers) {
        worker.wake.notify_one();
    }
    mRest.wait(lock, [this] { return mTasks == 0; });
    mNoPause = false;
    if (mException != nullptr) {
        std::rethrow_exception(std::exchange(mException, nullptr));
    }
}

void NamedThreads::pause(const std::function<bool()>& isOver) {
    auto& worker = *static_cast<Worker*>(current);
    std::unique_lock<std::mutex> lock(mMutex);
    const bool pausedBefore = std::exchange(worker.paused, true);
    ++mPaused;
    mRest.notify_one();
    while (!isOver() && waitForTask(worker, lock, [this] { return mNoPause; })) {
        runNext(worker, lock);
    }
    --mPaused;
    worker.paused = pausedBefore;
}

void NamedThreads::loop(Worker& worker) {
    current = &worker;
    std::unique_lock<std::mutex> lock(mMutex);
    while (waitForTask(worker, lock, [&] { return worker.stop; })) {
        runNext(worker, lock);
    }
}

// Returns whether there is a task; if not, it is over.
bool NamedThreads::waitForTask(Worker& worker, std::unique_lock<std::mutex>& lock,
                               const std::function<bool()>& isOver) {
    worker.resting = true;
    mRest.notify_one();
    worker.wake.wait(lock, [&] { return !worker.tasks.empty() || isOver(); });
    worker.resting = false;
    return !worker.tasks.empty();
}

void NamedThreads::runNext(Worker& worker, std::unique_lock<std::mutex>& lock) {
    const Task task = std::move(worker.tasks.front());
    worker.tasks.pop_front();
    lock.unlock();
    std::exception_ptr exception;
    try {
        task.run();
    } catch (...) {
        exception = std::current_exception();
    }
    lock.lock();
    if (mException == nullptr) {
        mException = exception;
    }
    mWaiting -= task.size;
    --mTasks;
    mRest.notify_one();
}

}  // namespace replay
