// A shared object that stands between a program and the library, as a HAL's plug-in does.

#include "InfoSynchronizerManager.h"

using camInfosync::InfoSynchronizerManager;

extern "C" {

INFOSYNC_EXPORT void* managerOfBetween() {
    return &InfoSynchronizerManager::getInstance();
}

// Registers through this object's own view of the manager, and flushes inside the library.
INFOSYNC_EXPORT void reportThroughBetween(const char* imageName) {
    InfoSynchronizerManager& manager = InfoSynchronizerManager::getInstance();
    manager.registerSnapshotRequestRecord(imageName);
    manager.updateFrameInfo(imageName, 1, "123", {7}, 0);
    manager.snapshotRequestInfoFlush(imageName, camInfosync::INFO_SYNC_TYPE_COLLECT);
    manager.unregisterSnapshotRequestRecord(imageName);
}

}  // extern "C"
