// A HAL's plug-in: a shared object between a program and the library.

#include "Plugin.h"

#include "InfoSynchronizerManager.h"

using camInfosync::InfoSynchronizerManager;

extern "C" {

INFOSYNC_EXPORT void* managerOfPlugin() {
    return &InfoSynchronizerManager::getInstance();
}

// Registers through the plug-in's own view of the manager, and flushes inside the library.
INFOSYNC_EXPORT void reportThroughPlugin(const char* imageName) {
    InfoSynchronizerManager& manager = InfoSynchronizerManager::getInstance();
    manager.registerSnapshotRequestRecord(imageName);
    manager.updateFrameInfo(imageName, 1, "123", {7}, 0);
    manager.snapshotRequestInfoFlush(imageName, camInfosync::INFO_SYNC_TYPE_COLLECT);
    manager.unregisterSnapshotRequestRecord(imageName);
}

}  // extern "C"
