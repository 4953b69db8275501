// What the stand-in service received, as docs/integration.md shows it.

#pragma once

#include <dlfcn.h>

#include <OverlapService.h>

// What the service has received since the last call; nothing if no service was found.
inline std::vector<ServiceCall> takeServiceCalls() {
    std::vector<ServiceCall> calls;
    void* take = dlsym(RTLD_DEFAULT, kTakeServiceCalls);
    if (take != nullptr) {
        reinterpret_cast<TakeServiceCalls*>(take)(&calls);
    }
    return calls;
}
