#include "Order.h"

#include <pthread.h>
#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

#include <atomic>

namespace recording {
namespace {

thread_local Frame* innermostFrame = nullptr;

// Not std::timed_mutex, which in a phone's C++ library is two objects. A phone that has the
// floating-point std::to_chars, which the recorder needs as well, has pthread_mutex_clocklock.
bool lockWithinASecond(pthread_mutex_t* mutex) {
    timespec until{};
#ifdef __SANITIZE_THREAD__  // does not know the function, and so not that the mutex is held
    clock_gettime(CLOCK_REALTIME, &until);
    until.tv_sec += 1;
    return pthread_mutex_timedlock(mutex, &until) == 0;
#else
    // Not the C library's: at a desk that may tell a thread the time of a recording.
    syscall(SYS_clock_gettime, CLOCK_MONOTONIC, &until);
    until.tv_sec += 1;
    return pthread_mutex_clocklock(mutex, CLOCK_MONOTONIC, &until) == 0;
#endif
}

}  // namespace

bool Order::lock() {
    if (mMutex.try_lock()) {
        return true;
    }
    if (mIsStuck.load(std::memory_order_relaxed)) {
        return false;
    }
    if (lockWithinASecond(mMutex.native_handle())) {
        return true;
    }
    mIsStuck.store(true, std::memory_order_relaxed);
    return mMutex.try_lock();  // if it was let go meanwhile, to be no longer stuck afterwards
}

void Order::unlock() {
    mIsStuck.store(false, std::memory_order_relaxed);
    mMutex.unlock();
}

Frame::Frame() : mOuter(innermostFrame) {
    innermostFrame = this;
}

Frame::~Frame() {
    letGo();
    innermostFrame = mOuter;
}

Frame* Frame::innermost() {
    return innermostFrame;
}

void Frame::hold(Order& order) {
    for (const Frame* frame = mOuter; frame != nullptr; frame = frame->mOuter) {
        if (frame->mOrder == &order && frame->mHolds) {
            return;
        }
    }
    mOrder = &order;
    holdAgain();
}

void Frame::holdAgain() {
    if (mOrder != nullptr) {
        mHolds = mOrder->lock();
    }
}

void Frame::letGo() {
    if (mHolds) {
        mHolds = false;
        mOrder->unlock();
    }
}

}  // namespace recording
