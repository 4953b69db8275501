// Loads the library, uses it and closes it again; returns 0 if nothing of it stays.

#include <dlfcn.h>

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>

namespace {

// Whether a library is loaded.
bool isLoaded(const char* path) {
    void* library = dlopen(path, RTLD_NOW | RTLD_NOLOAD);
    return library != nullptr && dlclose(library) == 0;
}

// Waits until that many of the process's threads are the library's. Returns whether they came to
// be.
bool awaitWorkers(int count) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    int found = -1;
    while (found != count && std::chrono::steady_clock::now() < deadline) {
        found = 0;
        for (const auto& task : std::filesystem::directory_iterator("/proc/self/task")) {
            std::ifstream file(task.path() / "comm");
            std::string name;
            found += std::getline(file, name) && name.rfind("InfoSyncThread", 0) == 0 ? 1 : 0;
        }
    }
    return found == count;
}

}  // namespace

int main(int /*argc*/, char** argv) {
    for (int i = 0; i < 3; ++i) {
        void* library = dlopen(argv[1], RTLD_NOW | RTLD_LOCAL);
        if (library == nullptr) {
            std::puts(dlerror());
            return 1;
        }
        for (const char* name :
             {"GetInstance", "_ZN11camInfosync23InfoSynchronizerManager11getInstanceEv"}) {
            reinterpret_cast<void* (*)()>(dlsym(library, name))();
        }
        const bool worked = awaitWorkers(2);
        constexpr char kOverlap[] = "/vendor/lib64/com.veltro.camhal.overlap.so";
        if (!worked || !isLoaded(kOverlap)) {
            return 2;
        }
        dlclose(library);
        if (isLoaded(argv[1]) || isLoaded(kOverlap) || !awaitWorkers(0)) {
            return 3;
        }
    }
    return 0;
}
