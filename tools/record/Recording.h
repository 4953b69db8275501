// What is written of a process's calls.

#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "Call.h"
#include "Line.h"
#include "Lines.h"
#include "OpenCalls.h"
#include "Order.h"
#include "RecordFile.h"
#include "RegisteredNames.h"
#include "Settings.h"

namespace recording {

using WriteArguments = std::function<void(Line&)>;

// Writes lines, each by one write, and begins files as they are needed: the first for the first
// call. Guarded by the recorder's write mutex. What goes wrong is thrown as a Fault or as
// std::bad_alloc; the recording must not be used any more then.
class Recording {
  public:
    Recording(const Settings& settings, const Header& header);

    // Writes the call's line, and its number to the frame, which is open then if its answer is
    // seen.
    void noteCall(Frame& frame, const Call& call, const WriteArguments& writeArguments);

    // What the frame's call was answered, or null if the service has thrown. Written if it is not
    // the last answer for its key, or if other lines have been written since the call's own:
    // then it says where the call goes on. The frame is open no more.
    void noteAnswer(Frame& frame, std::string_view key, const std::string* answer);

    // The call of a frame that is still open has returned: it has asked somebody else.
    void noteReturn(Frame& frame);

    // Writes the last line, if there is any line at all.
    void end();

    const RecordFile& file() const { return mFile; }

  private:
    void writeAnswer(const Frame& frame, std::string_view key, const std::string* answer);
    void close(Frame& frame, std::optional<std::string_view> answer);
    void takeEffect(Call::Kind kind, const std::string& image, std::string_view answer);
    void noteOrder(const Frame& frame);
    void put(int64_t now, size_t roomAfter);
    void beginPart(int64_t now);
    bool isTooLong() const;
    void omitArguments(const Call& call, size_t headSize);

    const Header mHeader;
    RecordFile mFile;
    Line mLine;  // kept, as the other, so that no call needs new memory
    Line mScratch;
    RegisteredNames mRegistered;
    OpenCalls mOpen;
    Answers mAnswers;  // the last of each key
    uint64_t mCalls = 0;
    uint64_t mLines = 0;
};

}  // namespace recording
