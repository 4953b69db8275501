// Loads a HAL with local scope, runs it and closes it: Loader KEPT HAL WHAT. KEPT is loaded before
// and stays: the service's place in it must then be as before. With KEPT alone, only loads that.

#include <dlfcn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>

namespace {

int fail() {
    std::puts(dlerror());
    return 1;
}

}  // namespace

int main(int argc, char** argv) {
    void* const kept = dlopen(argv[1], RTLD_NOW | RTLD_LOCAL);
    if (kept == nullptr) {
        return fail();
    }
    if (argc == 2) {
        return 0;
    }
    auto** const place = static_cast<void**>(
            dlsym(kept, "_ZN11camInfosync16InfoSynchronizer16mIntentAwareImplE"));
    const void* const before = place != nullptr ? *place : nullptr;
    void* const hal = dlopen(argv[2], RTLD_NOW | RTLD_LOCAL);
    if (hal == nullptr) {
        return fail();
    }
    const int result = reinterpret_cast<int (*)(const char*)>(dlsym(hal, "runHal"))(argv[3]);
    dlclose(hal);
    // What is called in a child must have gone as well.
    const pid_t child = fork();
    if (child == 0) {
        _exit(0);
    }
    waitpid(child, nullptr, 0);
    std::puts(place == nullptr || *place == before ? "closed" : "the service's place is taken");
    return result;
}
