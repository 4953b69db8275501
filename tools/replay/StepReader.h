// Reads the lines of a log as steps.

#pragma once

#include <cstddef>
#include <cstdint>
#include <set>
#include <string>
#include <vector>

#include "CaptureLog.h"
#include "LineError.h"
#include "LogFile.h"

namespace replay {

// Reads a log from its first line to its last, any number of times, and says what is wrong with
// each line. The threads that it names are counted over all readings.
class StepReader {
  public:
    // The log must outlive this.
    explicit StepReader(LogFile& log) : mLog(log) {}

    // Goes back to the first line; image names have this suffix from now on.
    void restart(std::string imageSuffix);

    // Reads the next line. Returns false at the end. The step is meaningful only if `errors` is
    // empty then. Throws std::runtime_error if the log cannot be read.
    bool next(CaptureStep& step);

    // Remembers how long the log is: to be called after its last line.
    void noteLength() { mLength = mLog.position(); }
    bool isAtNotedLength() const { return mLog.position() == mLength; }

    // Of the last line:
    const std::vector<LineError>& errors() const { return mErrors; }
    size_t lineSize() const { return mLine.size(); }
    std::string place() const;  // "LOG:LINE", printable

    const LogFile& log() const { return mLog; }

  private:
    void countThread(const std::string& name);

    LogFile& mLog;
    uint64_t mLength = 0;
    std::string mLine;
    std::string mImageSuffix;
    std::vector<LineError> mErrors;
    std::set<std::string> mThreads;
};

}  // namespace replay
