#include "SessionFindings.h"

#include <cstdint>
#include <optional>
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

constexpr uint64_t kRefused = uint64_t{1} << 63;  // no line has such a number

uint64_t refused(CollectionSwitchOff which) {
    return kRefused + static_cast<uint64_t>(which);
}

}  // namespace

void SessionFindings::addSwitchedOff(const CaptureStep& step, CollectionSwitchOff which,
                                     const std::optional<std::string>& answer) {
    SwitchedOff& off = mSwitchedOff[which];
    if (off.calls++ == 0) {
        off.first = originOf(step);
        off.answer = answer;
    }
}

void SessionFindings::noteRefused(const std::string& name, CollectionSwitchOff which) {
    mGone.add(name, refused(which));
}

void SessionFindings::addMissing(const CaptureStep& step, bool isThereNow) {
    const std::string& name = step.arguments.image;
    const std::string operation(step.operation);
    const Origin origin = originOf(step);
    const auto removed = mGone.lineOf(name);
    if (removed && *removed >= kRefused) {
        addSwitchedOff(step, static_cast<CollectionSwitchOff>(*removed - kRefused), {});
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
        mFindings.add({FindingKind::kCollectionOff,
                       reasonOf(which, off.answer.value_or("")) + "; " + calls +
                               " had no effect; " + remedyOf(which, off.answer),
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
