// What decides whether registration, unregistration and flush do anything.

#pragma once

#include <cstring>

#include "InfoSynchronizer.h"

namespace camInfosync {

struct CollectionSwitch {
    // Asks the executor, every time: also when collection is forced or not supported.
    CollectionSwitch(InfoSynchronizer& executor, bool supported, bool forced)
        : cmdVal(static_cast<const char*>(executor.requestCmd("snapshotInfoCollectEnable"))),
          collectEnabled(forced || std::strcmp(cmdVal, "enabled") == 0),
          isOn(supported && collectEnabled) {}

    const char* const cmdVal;  // the executor's, for as long as it lives
    const bool collectEnabled;
    const bool isOn;
};

}  // namespace camInfosync
