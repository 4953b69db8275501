// Measures what loading a library costs: infosync-load-probe LIBRARY REFERENCE COUNT. Each load
// takes place in a process of its own, LIBRARY and REFERENCE in turn, and medians are printed.
// The time is the processor's, which other programs do not add to.

#include <dlfcn.h>
#include <malloc.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <vector>

namespace {

struct Load {
    long long nanoseconds;
    long long heapBytes;
};

long long nanosecondsNow() {
    timespec now{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return now.tv_sec * 1'000'000'000LL + now.tv_nsec;
}

bool loadHere(const char* library, Load& load) {
    const auto heapBefore = static_cast<long long>(mallinfo2().uordblks);
    const long long begin = nanosecondsNow();
    const void* handle = dlopen(library, RTLD_NOW);
    load.nanoseconds = nanosecondsNow() - begin;
    load.heapBytes = static_cast<long long>(mallinfo2().uordblks) - heapBefore;
    return handle != nullptr;
}

// Loads in a child process. What the library prints while it loads is not shown.
Load loadInChild(const char* library, void* shared) {
    auto& load = *static_cast<Load*>(shared);
    if (fork() == 0) {
        std::FILE* const errors = fdopen(dup(STDERR_FILENO), "w");
        const bool loaded = std::freopen("/dev/null", "w", stdout) != nullptr &&
                            std::freopen("/dev/null", "w", stderr) != nullptr &&
                            loadHere(library, load);
        const char* reason = loaded ? nullptr : dlerror();
        std::fprintf(errors, "%s", reason != nullptr ? reason : "");
        std::fflush(errors);
        _exit(loaded ? 0 : 1);
    }
    int status = -1;
    wait(&status);
    if (status != 0) {
        std::fprintf(stderr, "\ninfosync-load-probe: %s did not load\n", library);
        std::exit(1);
    }
    return load;
}

long long median(std::vector<Load>& loads, long long Load::*member) {
    const auto middle = loads.begin() + static_cast<std::ptrdiff_t>(loads.size() / 2);
    std::nth_element(loads.begin(), middle, loads.end(),
                     [member](const Load& a, const Load& b) { return a.*member < b.*member; });
    return (*middle).*member;
}

}  // namespace

int main(int argc, char** argv) {
    const int count = argc == 4 ? std::atoi(argv[3]) : 0;
    if (count < 1) {
        std::fprintf(stderr, "usage: infosync-load-probe LIBRARY REFERENCE COUNT\n");
        return 2;
    }
    void* shared =
            mmap(nullptr, sizeof(Load), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (shared == MAP_FAILED) {
        std::perror("infosync-load-probe: mmap");
        return 1;
    }
    std::vector<Load> library;
    std::vector<Load> reference;
    for (int i = 0; i < count; ++i) {
        library.push_back(loadInChild(argv[1], shared));
        reference.push_back(loadInChild(argv[2], shared));
    }
    const long long libraryTime = median(library, &Load::nanoseconds);
    const long long referenceTime = median(reference, &Load::nanoseconds);
    std::printf("load: %.2f times as long as the reference (medians of %d: %lld us, %lld us)\n",
                static_cast<double>(libraryTime) / static_cast<double>(referenceTime), count,
                libraryTime / 1000, referenceTime / 1000);
    std::printf("heap after load: %lld bytes (reference: %lld bytes)\n",
                median(library, &Load::heapBytes), median(reference, &Load::heapBytes));
    return 0;
}
