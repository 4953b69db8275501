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

}  // namespace

NamedThreads::~NamedThreads() {
    {
        std::lock_guard<std::mutex> lock(mMutex);
        mStop = true;
    }
    for (auto& [name, worker] : mWorkers) {
        worker.wake.notify_one();
        if (worker.thread.joinable()) {
            worker.thread.join();
        }
    }
}

void NamedThreads::post(const std::string& name, size_t size, std::function<void()> task) {
    Worker& worker = mWorkers[name];
    if (!worker.thread.joinable()) {
        worker.thread = std::thread([this, &worker] { loop(worker); });
    }
    std::unique_lock<std::mutex> lock(mMutex);
    mTaskDone.wait(lock, [&] { return mTasks == 0 || mWaiting + size <= kMostWaiting; });
    worker.tasks.push_back({size, std::move(task)});
    mWaiting += size;
    ++mTasks;
    worker.wake.notify_one();
}

void NamedThreads::wait() {
    std::unique_lock<std::mutex> lock(mMutex);
    mTaskDone.wait(lock, [this] { return mTasks == 0; });
    if (mException != nullptr) {
        std::rethrow_exception(std::exchange(mException, nullptr));
    }
}

void NamedThreads::loop(Worker& worker) {
    std::unique_lock<std::mutex> lock(mMutex);
    while (true) {
        worker.wake.wait(lock, [&] { return mStop || !worker.tasks.empty(); });
        if (worker.tasks.empty()) {
            return;
        }
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
        mTaskDone.notify_one();
    }
}

}  // namespace replay
