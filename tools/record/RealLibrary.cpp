#include "RealLibrary.h"

#include <dlfcn.h>

#include <android/log.h>

#include "Tag.h"

namespace recording {

void* findReal(void* own) {
    Dl_info symbol{};
    // The name is the exported one, so that no mangled name need be written down.
    const bool isNamed = dladdr(own, &symbol) != 0 && symbol.dli_sname != nullptr;
    void* const real = isNamed ? dlsym(RTLD_NEXT, symbol.dli_sname) : nullptr;
    if (real == nullptr || real == own) {
        __android_log_print(ANDROID_LOG_ERROR, kTag,
                            "the library has no %s; calls of it do nothing",
                            isNamed ? symbol.dli_sname : "operation of that address");
        return nullptr;
    }
    return real;
}

}  // namespace recording
