#include "StepReader.h"

#include <cstddef>
#include <string>
#include <utility>

#include "CaptureLog.h"
#include "FieldErrors.h"
#include "LogFile.h"

namespace replay {
namespace {

using Kind = CaptureStep::Kind;

constexpr size_t kMostThreads = 64;

}  // namespace

void StepReader::restart(std::string imageSuffix) {
    mLog.rewind();
    mImageSuffix = std::move(imageSuffix);
    mOrigin = Origin::kUnknown;
    mEnded = false;
}

bool StepReader::next(CaptureStep& step) {
    if (!mLog.next(mLine)) {
        return false;
    }
    step = {};
    mErrors.clear();
    mCut = false;
    if (mLog.lineIsTooLong()) {
        mErrors.push_back(
                {"line", "is longer than " + std::to_string(mLog.longestLine()) + " bytes"});
    } else if (!mHeader.exists() || mLog.lineNumber() != mHeader.line) {
        readLine(step);
    } else {
        mCut = mHeader.isCut;
    }
    step.line = mLog.lineNumber();
    return true;
}

void StepReader::readLine(CaptureStep& step) {
    step = readCaptureLine(mLine, mImageSuffix, mErrors,
                           mHeader.exists() ? LineRules::kUnderHeader : LineRules::kWithoutHeader,
                           mTree);
    mTree.trim();
    if (step.kind == Kind::kBroken && mHeader.exists() && !mLog.lineIsWhole()) {
        mErrors.clear();
        step = {};
        mCut = true;
    }
    if (mErrors.empty()) {
        checkOrigin(step);
    }
    if (mErrors.empty() && !mHeader.exists() && !step.thread.empty()) {
        countThread(step.thread);
    }
}

// Refuses a mixture of recorded lines and others, and lines after the end.
void StepReader::checkOrigin(const CaptureStep& step) {
    if (step.kind == Kind::kNothing) {
        return;
    }
    if (mEnded) {
        mErrors.push_back({"line", "comes after the end of the recording"});
    }
    mEnded = mEnded || step.kind == Kind::kEnd;
    if (step.kind == Kind::kEnd) {
        return;
    }
    const Origin origin = step.isRecorded() ? Origin::kRecorded : Origin::kByHand;
    if (mOrigin == Origin::kUnknown) {
        mOrigin = origin;
    } else if (origin == mOrigin) {
        return;
    } else if (origin == Origin::kRecorded) {
        mErrors.push_back({"tid", "cannot be given: the lines before are not recorded"});
    } else if (step.kind == Kind::kBarrier || step.kind == Kind::kSleep) {
        mErrors.push_back({step.kind == Kind::kBarrier ? "barrier" : "sleepMs",
                           "cannot be given: the lines before are recorded"});
    } else {
        mErrors.push_back({"tid", "is missing: the lines before are recorded"});
    }
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

}  // namespace replay
