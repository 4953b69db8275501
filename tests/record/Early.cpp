// A library that calls while it is being loaded, perhaps before the recorder is.

#include "InfoSynchronizerManager.h"

namespace {

struct Early {
    Early() {
        camInfosync::InfoSynchronizerManager::getInstance().registerSnapshotRequestRecord("A");
    }
};
const Early early;

}  // namespace
