// Findings about calls that meet no capture.

#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "CaptureContent.h"
#include "CaptureLog.h"
#include "CollectionState.h"
#include "Finding.h"
#include "FindingList.h"
#include "NameMemory.h"

namespace replay {

class SessionFindings {
  public:
    // `beginningsAreLost`: captures may have been registered in an earlier log.
    explicit SessionFindings(bool beginningsAreLost) : mBeginningsAreLost(beginningsAreLost) {}

    void noteRegistered(const std::string& name) { mNear.add(name); }
    void noteRemoved(const std::string& name, uint64_t line) { mGone.add(name, line); }

    // A call that did nothing since a switch is off.
    void addSwitchedOff(const CaptureStep& step, CollectionSwitchOff which,
                        const std::optional<std::string>& answer);
    // A capture could not be registered for that reason: further calls on it are counted there.
    void noteRefused(const std::string& name, CollectionSwitchOff which);
    // A call on a name that no capture had then.
    void addMissing(const CaptureStep& step, bool isThereNow);
    // A call that belongs to no name.
    void add(view::Finding finding) { mFindings.add(std::move(finding), {}); }
    // A finding about a call on a name that no capture has; its text does not name it.
    void add(view::Finding finding, const std::string& name);

    // In the order of the lines.
    std::vector<view::Finding> take();

  private:
    struct SwitchedOff {
        Origin first;
        std::optional<std::string> answer;
        uint64_t calls = 0;
    };

    const bool mBeginningsAreLost;
    FindingList mFindings;
    std::map<CollectionSwitchOff, SwitchedOff> mSwitchedOff;
    NearNames mNear;
    NameMemory mGone;  // with the line of the removal, or what refused() makes of a switch
};

}  // namespace replay
