// Whether snapshots are collected, why not, and what helps.

#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace replay {

// What the service answers to whether snapshots are collected.
struct CollectionAnswer {
    std::string first;
    uint64_t changes = 0;  // how often it answered something else afterwards
};

bool isSupported();
bool isForced();
bool hasService();

// In a few words for the user.
std::string collectionState(const CollectionAnswer& answer);

// What keeps a call from having an effect.
enum class CollectionSwitchOff { kNotSupported, kNoService, kAnswer, kServiceThrew };

// Which switch is off for a call that was given `answer`, if any is; without an answer nobody was
// asked.
std::optional<CollectionSwitchOff> switchThatIsOff(const std::optional<std::string>& answer,
                                                   bool serviceThrew);

// Why nothing is collected.
std::string reasonOf(CollectionSwitchOff which, const std::string& answer);
// What the user can do about it, also where further switches are off. The service has given
// `answer`, if any.
std::string remedyOf(CollectionSwitchOff which, const std::optional<std::string>& answer);

}  // namespace replay
