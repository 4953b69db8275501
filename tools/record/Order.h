// The order in which calls take effect.

#pragma once

#include <cstdint>
#include <mutex>

namespace recording {

// A call of this thread that is being recorded, for as long as it is made. Frames of one thread
// lie in each other.
//
// A mutex that a frame holds makes the order of the lines that of the effects: it is held from
// before the line is written until the call has returned. It is not held while the service is
// asked: the service may call the library from there, or wait for a thread that does.
class Frame {
  public:
    Frame();
    // Also where the call throws.
    ~Frame();
    Frame(const Frame&) = delete;
    Frame& operator=(const Frame&) = delete;

    // This thread's innermost frame, or null.
    static Frame* innermost();

    // Holds `order`, unless an outer frame does: then the library's own locks decide what happens.
    void hold(std::mutex& order);

    // Lets go of what is held, and returns it; or null.
    std::mutex* release();

    uint64_t call = 0;    // its number; 0 while it has no line
    uint64_t lines = 0;   // that had been written when its own was
    bool isOpen = false;  // the service is still to answer the call

  private:
    Frame* const mOuter;
    std::mutex* mHeld = nullptr;
};

}  // namespace recording
