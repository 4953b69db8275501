// Reads the lines of a log as steps.

#pragma once

#include <cstddef>
#include <cstdint>
#include <set>
#include <string>
#include <vector>

#include "CaptureLog.h"
#include "JsonTree.h"
#include "LineError.h"
#include "LogFile.h"
#include "LogHeader.h"

namespace replay {

// Reads a log from its first line to its last, any number of times, and says what is wrong with
// each line. The threads that a log without a header names are counted over all readings.
class StepReader {
  public:
    // Both must outlive this.
    StepReader(LogFile& log, const LogHeader& header) : mLog(log), mHeader(header) {}

    // Goes back to the first line; image names have this suffix from now on.
    void restart(std::string imageSuffix);

    // Reads the next line. Returns false at the end. The step is meaningful only if `errors` is
    // empty then, but for its kind. Throws std::runtime_error if the log cannot be read.
    bool next(CaptureStep& step);

    // Remembers how long the log is: to be called after its last line.
    void noteLength() { mLength = mLog.position(); }
    bool isAtNotedLength() const { return mLog.position() == mLength; }

    // Of the last line:
    const std::vector<LineError>& errors() const { return mErrors; }
    size_t lineSize() const { return mLine.size(); }
    std::string place() const { return mLog.place(); }
    bool beginsAsObject() const { return mLine.find_first_not_of(" \t\r") == mLine.find('{'); }
    // It is the recording's last, was cut off and is left out.
    bool lineIsCut() const { return mCut; }

    const LogFile& log() const { return mLog; }
    const LogHeader& header() const { return mHeader; }

  private:
    // Who wrote the log's lines.
    enum class Origin { kUnknown, kByHand, kRecorded };

    void readLine(CaptureStep& step);
    void checkOrigin(const CaptureStep& step);
    void countThread(const std::string& name);

    LogFile& mLog;
    const LogHeader& mHeader;
    uint64_t mLength = 0;
    std::string mLine;
    JsonTree mTree;
    std::string mImageSuffix;
    std::vector<LineError> mErrors;
    std::set<std::string> mThreads;
    Origin mOrigin = Origin::kUnknown;
    bool mCut = false;
    bool mEnded = false;
};

}  // namespace replay
