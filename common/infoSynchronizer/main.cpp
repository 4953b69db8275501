// The library's C entry point.

#include "InfoSynchronizerManager.h"

void* GetInstance() {
    static camInfosync::InfoSynchronizerManager manager;
    return &manager;
}
