#include "StepReader.h"

#include <cstddef>
#include <string>
#include <utility>

#include "CaptureLog.h"
#include "LogFile.h"
#include "Printable.h"

namespace replay {
namespace {

constexpr size_t kMostThreads = 64;

}  // namespace

void StepReader::restart(std::string imageSuffix) {
    mLog.rewind();
    mImageSuffix = std::move(imageSuffix);
}

bool StepReader::next(CaptureStep& step) {
    if (!mLog.next(mLine)) {
        return false;
    }
    step = {};
    mErrors.clear();
    if (mLog.lineIsTooLong()) {
        mErrors.push_back(
                {"line", "is longer than " + std::to_string(LogFile::kLongestLine) + " bytes"});
    } else {
        step = readCaptureLine(mLine, mImageSuffix, mErrors);
    }
    if (mErrors.empty() && !step.thread.empty()) {
        countThread(step.thread);
    }
    return true;
}

void StepReader::countThread(const std::string& name) {
    if (mThreads.count(name) != 0) {
        return;
    }
    if (mThreads.size() == kMostThreads) {
        mErrors.push_back({"thread", "is one name too many; a log may name " +
                                             std::to_string(kMostThreads) + " threads"});
        return;
    }
    mThreads.insert(name);
}

std::string StepReader::place() const {
    return printable(mLog.name()) + ':' + std::to_string(mLog.lineNumber());
}

}  // namespace replay
