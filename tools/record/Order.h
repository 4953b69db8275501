// The order in which calls take effect.

#pragma once

#include <atomic>
#include <cstdint>
#include <mutex>

namespace recording {

// Lets calls take effect in the order of their lines: held from before the line is written until
// the call has returned.
class Order {
  public:
    constexpr Order() = default;

    // Waits for at most a second, and not at all once somebody else has waited that long for the
    // one who holds it: he may be waiting for a call that the library alone would let pass. Returns
    // whether it is held.
    bool lock();
    void unlock();

  private:
    std::mutex mMutex;
    std::atomic<bool> mIsStuck{false};
};

// A call of this thread that is being recorded, for as long as it is made. Frames of one thread
// lie in each other. The order is not held while the service is asked: the service may call the
// library from there, or wait for a thread that does.
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
    void hold(Order& order);
    void letGo();
    // What it has let go.
    void holdAgain();
    // False if it has waited for the order in vain.
    bool isOrdered() const { return mOrder == nullptr || mHolds; }

    uint64_t call = 0;    // its number; 0 while it has no line
    uint64_t lines = 0;   // that had been written when its own was
    bool isOpen = false;  // the service is still to answer the call

  private:
    Frame* const mOuter;
    Order* mOrder = nullptr;
    bool mHolds = false;
};

}  // namespace recording
