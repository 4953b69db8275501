#include "CollectionState.h"

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <optional>
#include <string>

#include "FindingList.h"
#include "HostRoot.h"
#include "InfoSynchronizer.h"
#include "InfoSynchronizerManager.h"
#include "PropertyNames.h"

namespace replay {
namespace {

constexpr size_t kLongestAnswer = 60;
constexpr char kEnabled[] = "enabled";

std::string quoted(const std::string& answer) {
    return '"' + shortened(answer, kLongestAnswer) + '"';
}

// Compared as the library does: up to a zero byte.
bool isEnabled(const std::string& answer) {
    return std::strcmp(answer.c_str(), kEnabled) == 0;
}

// Whether there would be a service if it were not left out.
bool isServiceLeftOut() {
    return std::getenv("INFOSYNC_HOST_NO_SERVICE") != nullptr;
}

std::string setTrue(const char* property) {
    return std::string("--property ") + property + "=true";
}

std::string remedyForNoService() {
    return (isServiceLeftOut() ? "--service, or " : "") + setTrue(kForcedProperty) +
           (isServiceLeftOut() ? ", turns it on" : " turns it on");
}

std::string remedyForNotSupported(const std::optional<std::string>& answer) {
    const bool isAnsweredNo = answer && !isEnabled(*answer);
    const std::string more = isForced()                            ? ""
                             : !hasService() && isServiceLeftOut() ? " and --service"
                             : !hasService() ? " and " + setTrue(kForcedProperty)
                             : isAnsweredNo  ? " and --answer enabled"
                                             : "";
    const std::string path = hostRoot() + "/build.prop";
    const bool isThere = std::ifstream(path).is_open();
    return setTrue(kSupportedProperty) + more + (more.empty() ? " turns it on" : " turn it on") +
           (isThere ? "" : "; no build.prop found: " + path);
}

}  // namespace

bool isSupported() {
    return camInfosync::camQuillSupported;
}

bool isForced() {
    return camInfosync::infoSyncCollectForceEnabled;
}

bool hasService() {
    return camInfosync::InfoSynchronizer::mIntentAwareImpl != nullptr;
}

std::string collectionState(const CollectionAnswer& answer) {
    if (!isSupported()) {
        return std::string("off: ") + kSupportedProperty + " is not true";
    }
    if (isForced()) {
        return std::string("on: forced by ") + kForcedProperty;
    }
    if (!hasService()) {
        return "off: there is no service to ask";
    }
    const std::string state = isEnabled(answer.first) ? "on" : "off";
    const std::string text = ": the service answers " + quoted(answer.first);
    if (answer.changes == 0) {
        return state + text;
    }
    return state + " at first" + text + ", and changes its answer " +
           std::to_string(answer.changes) + (answer.changes == 1 ? " time" : " times");
}

std::optional<CollectionSwitchOff> switchThatIsOff(const std::optional<std::string>& answer,
                                                   bool serviceThrew) {
    if (serviceThrew) {
        return CollectionSwitchOff::kServiceThrew;
    }
    if (!isSupported()) {
        return CollectionSwitchOff::kNotSupported;
    }
    if (isForced()) {
        return std::nullopt;
    }
    if (!hasService()) {
        return CollectionSwitchOff::kNoService;
    }
    return !answer || isEnabled(*answer) ? std::nullopt
                                         : std::optional(CollectionSwitchOff::kAnswer);
}

std::string reasonOf(CollectionSwitchOff which, const std::string& answer) {
    switch (which) {
        case CollectionSwitchOff::kNotSupported:
            return std::string("collection is off: ") + kSupportedProperty + " is not true";
        case CollectionSwitchOff::kNoService:
            return std::string("collection is off: there is no service to ask, and ") +
                   kForcedProperty + " is not true";
        case CollectionSwitchOff::kAnswer:
            return "collection is off: the service answers " + quoted(answer);
        case CollectionSwitchOff::kServiceThrew:
            return "the service throws when it is asked whether to collect";
    }
    return {};
}

std::string remedyOf(CollectionSwitchOff which, const std::optional<std::string>& answer) {
    switch (which) {
        case CollectionSwitchOff::kNotSupported:
            return remedyForNotSupported(answer);
        case CollectionSwitchOff::kNoService:
            return remedyForNoService();
        case CollectionSwitchOff::kAnswer:
            return "--answer enabled turns it on";
        case CollectionSwitchOff::kServiceThrew:
            return "--answer enabled answers in its place";
    }
    return {};
}

}  // namespace replay
