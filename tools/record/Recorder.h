// Decides whether calls are recorded, and sees to it that recording them harms nobody.

#pragma once

#include <atomic>
#include <cstddef>
#include <string>
#include <string_view>

#include "Order.h"
#include "Recording.h"

namespace recording {

// Everything here lives in static storage that is never destroyed: calls may come before the
// recorder's initialisers and after its end. What those calls use must need no initialiser; g++
// makes one of a constant initialisation unless it is told not to.
#ifdef __clang__
#define RECORDING_CONSTINIT [[clang::require_constant_initialization]]
#else
#define RECORDING_CONSTINIT __constinit
#endif

enum class State { kUndecided, kOff, kOn };
extern std::atomic<State> gState;

// Decided while the recorder is being loaded; for good once true.
inline bool isOff() {
    return gState.load(std::memory_order_acquire) == State::kOff;
}

// Decides, if that is still to be done. False from then on in a process that was forked.
bool isRecording();

// The managers that the accessors have returned; others are their callers' own.
extern std::atomic<const void*> gManager;       // of getInstance()
extern std::atomic<const void*> gOtherManager;  // of GetInstance()

// A frame that leaves no call open.
class RecordedFrame : public Frame {
  public:
    RecordedFrame() = default;
    ~RecordedFrame();
    RecordedFrame(const RecordedFrame&) = delete;
    RecordedFrame& operator=(const RecordedFrame&) = delete;
};

// Makes the frame hold the call's order, and writes the call's line. Does not throw: whatever goes
// wrong ends the recording, with one warning. Updates of a manager that is its caller's own are
// left out, with one warning for all.
void noteCall(Frame& frame, const void* manager, Call call, const WriteArguments& writeArguments);

// The time while the service is being asked on behalf of a frame's call, which holds no order
// then. Afterwards, or when the service has thrown, it does again, and what was answered is noted.
class Question {
  public:
    Question(Frame& frame, const std::string& key);
    ~Question();
    Question(const Question&) = delete;
    Question& operator=(const Question&) = delete;

    void answered(const std::string& answer);

  private:
    void goOn(const std::string* answer);

    Frame& mFrame;
    char mShortKey[1024];  // needs no memory
    std::string mLongKey;
    std::string_view mKey;
    bool mIsOpen = true;
};

// Finds the library's operations; called once, while the recorder is being loaded.
void findOperations();

}  // namespace recording
