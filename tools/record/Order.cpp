#include "Order.h"

#include <pthread.h>
#include <time.h>

#include <atomic>

namespace recording {
namespace {

thread_local Frame* innermostFrame = nullptr;

}  // namespace

bool Order::lock() {
    if (mMutex.try_lock()) {
        return true;
    }
    if (mIsStuck.load(std::memory_order_relaxed)) {
        return false;
    }
    timespec until{};
    clock_gettime(CLOCK_REALTIME, &until);
    until.tv_sec += 1;
    // Not std::timed_mutex, which in a phone's C++ library is two objects.
    if (pthread_mutex_timedlock(mMutex.native_handle(), &until) == 0) {
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
