// Stands for the library under the name that it has behind the recorder in its place. Linked
// against, never loaded.

#include "InfoSynchronizer.h"

__attribute__((visibility("default")))
IntentAwareSys* camInfosync::InfoSynchronizer::mIntentAwareImpl = nullptr;
