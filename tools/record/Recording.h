// What is written of a process's calls.

#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

#include "Line.h"
#include "Lines.h"
#include "Order.h"
#include "RecordFile.h"
#include "RegisteredNames.h"
#include "Settings.h"

namespace recording {

// A call that is about to be made.
struct Call {
    enum class Kind { kRegister, kUnregister, kFlush, kUpdate, kRequest };

    std::string_view name;
    Kind kind;
    const std::string* image;  // null: it belongs to none
    bool isOther = false;      // made on the manager of GetInstance()
};

using WriteArguments = std::function<void(Line&)>;

// Writes lines, each by one write, and begins files as they are needed: the first for the first
// call. Guarded by the recorder's write mutex. What goes wrong is thrown as a Fault or as
// std::bad_alloc; the recording must not be used any more then.
class Recording {
  public:
    Recording(const Settings& settings, const Header& header);

    // Writes the call's line, and its number to the frame.
    void noteCall(Frame& frame, const Call& call, const WriteArguments& writeArguments);

    // What the frame's call was answered, or null if the service has thrown. Written if it is not
    // the last answer for its key, or if other lines have been written since the call's own:
    // then it says where the call goes on.
    void noteAnswer(const Frame& frame, std::string_view key, const std::string* answer);

    // Writes the last line, if there is any line at all.
    void end();

    const RecordFile& file() const { return mFile; }

  private:
    void put(int64_t now);
    void beginPart();
    bool isTooLong() const;
    void omitArguments(const Call& call, size_t headSize);

    const Header mHeader;
    RecordFile mFile;
    Line mLine;  // kept, as the other, so that no call needs new memory
    Line mScratch;
    RegisteredNames mRegistered;
    Answers mAnswers;  // the last of each key
    uint64_t mCalls = 0;
    uint64_t mLines = 0;
};

}  // namespace recording
