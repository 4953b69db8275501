#include "Order.h"

#include <mutex>

namespace recording {
namespace {

thread_local Frame* innermostFrame = nullptr;

}  // namespace

Frame::Frame() : mOuter(innermostFrame) {
    innermostFrame = this;
}

Frame::~Frame() {
    release();
    innermostFrame = mOuter;
}

Frame* Frame::innermost() {
    return innermostFrame;
}

void Frame::hold(std::mutex& order) {
    for (const Frame* frame = mOuter; frame != nullptr; frame = frame->mOuter) {
        if (frame->mHeld == &order) {
            return;
        }
    }
    order.lock();
    mHeld = &order;
}

std::mutex* Frame::release() {
    std::mutex* const held = mHeld;
    mHeld = nullptr;
    if (held != nullptr) {
        held->unlock();
    }
    return held;
}

}  // namespace recording
