// Decides which calls of a log are played.

#pragma once

#include <set>
#include <string>
#include <vector>

#include "CaptureLog.h"
#include "LogHeader.h"

namespace replay {

class CallFilter {
  public:
    enum class Verdict {
        kPlayed,
        kOtherImage,  // of an image that is not wanted
        kCut,         // of an image whose first calls are lost
        kOmitted,     // without arguments
    };

    // Without `images`, all are wanted. The header must outlive this.
    CallFilter(const LogHeader& header, const std::vector<std::string>& images)
        : mHeader(header), mWanted(images.begin(), images.end()) {}

    // To be called before the log's first line.
    void restart() { mCut = {mHeader.cut.begin(), mHeader.cut.end()}; }

    // To be asked of each call in the log's order.
    Verdict judge(const CaptureStep& call);

  private:
    bool isCut(const CaptureStep& call);

    const LogHeader& mHeader;
    const std::set<std::string> mWanted;
    std::set<std::string> mCut;
};

}  // namespace replay
