#include "SessionFindings.h"

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "CaptureContent.h"
#include "CaptureLog.h"
#include "CollectionState.h"
#include "Finding.h"
#include "FindingList.h"
#include "TrackedCapture.h"

namespace replay {
namespace {

using view::FindingKind;

}  // namespace

void SessionFindings::addSwitchedOff(const CaptureStep& step, CollectionSwitchOff which,
                                     const std::string& answer) {
    SwitchedOff& off = mSwitchedOff[which];
    if (off.calls++ == 0) {
        off.first = originOf(step);
        off.answer = answer;
    }
}

void SessionFindings::noteRefused(const std::string& name, CollectionSwitchOff which) {
    mRefused.add(name, static_cast<uint64_t>(which));
}

void SessionFindings::addMissing(const CaptureStep& step, bool isThereNow) {
    const std::string& name = step.arguments.image;
    const std::string operation(step.operation);
    const Origin origin = originOf(step);
    const auto removed = mRemoved.lineOf(name);
    if (const auto refused = mRefused.lineOf(name); refused && !removed) {
        addSwitchedOff(step, static_cast<CollectionSwitchOff>(*refused), {});
        return;
    }
    const FindingKind kind = removed ? FindingKind::kAfterRemoval : FindingKind::kUnknownName;
    std::string text = operation;
    if (removed) {
        text += ": was unregistered in line " + std::to_string(*removed);
    } else if (isThereNow) {
        text += ": is not registered yet";
    } else {
        text += ": is not registered";
        if (mFindings.keeps(kind, name)) {  // for the others it would be looked for in vain
            text += mNear.didYouMean(name);
        }
        text += mBeginningsAreLost ? "; it may have been in an earlier log" : "";
    }
    add({kind, std::move(text), operation, origin.place, origin.at}, name);
}

void SessionFindings::add(view::Finding finding, const std::string& name) {
    finding.text = shortened(name.empty() ? "(no name)" : name, 200) + ": " + finding.text;
    mFindings.add(std::move(finding), name);
}

std::vector<view::Finding> SessionFindings::take() {
    for (const auto& [which, off] : mSwitchedOff) {
        const std::string calls = off.calls == 1 ? "1 call" : std::to_string(off.calls) + " calls";
        mFindings.add(
                {FindingKind::kCollectionOff,
                 reasonOf(which, off.answer) + "; " + calls + " had no effect; " + remedyOf(which),
                 {},
                 off.first.place,
                 off.first.at,
                 off.calls},
                {});
    }
    mSwitchedOff.clear();
    return mFindings.take();
}

}  // namespace replay
