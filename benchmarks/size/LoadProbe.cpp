// Measures what loading a library costs: infosync-load-probe LIBRARY REFERENCE COUNT. Each load
// takes place in a process of its own, LIBRARY and REFERENCE in turn, and medians are printed.
// The time is the processor's, which other programs do not add to.

#include <dlfcn.h>
#include <malloc.h>
#include <stdio.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <vector>

namespace {

struct Load {
    long long microseconds;
    long long heapBytes;
};

bool loadHere(const char* library, Load& load) {
    const auto heapBefore = static_cast<long long>(mallinfo2().uordblks);
    const std::clock_t begin = std::clock();
    const void* handle = dlopen(library, RTLD_NOW);
    load.microseconds = (std::clock() - begin) * 1000000 / CLOCKS_PER_SEC;
    load.heapBytes = static_cast<long long>(mallinfo2().uordblks) - heapBefore;
    return handle != nullptr;
}

// Loads in a child process. What the library prints while it loads is not shown.
Load loadInChild(const char* library, void* shared) {
    auto& load = *static_cast<Load*>(shared);
    if (fork() == 0) {
        const int errors = dup(STDERR_FILENO);
        const bool loaded = std::freopen("/dev/null", "w", stdout) != nullptr &&
                            std::freopen("/dev/null", "w", stderr) != nullptr &&
                            loadHere(library, load);
        if (!loaded) {
            dprintf(errors, "%s\n", dlerror());
        }
        _exit(loaded ? 0 : 1);
    }
    int status = -1;
    wait(&status);
    if (status != 0) {
        std::fprintf(stderr, "infosync-load-probe: %s did not load\n", library);
        std::exit(1);
    }
    return load;
}

long long median(std::vector<long long> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
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
    std::vector<long long> times[2];
    std::vector<long long> heaps[2];
    for (int i = 0; i < 2 * count; ++i) {
        const Load load = loadInChild(argv[1 + i % 2], shared);
        times[i % 2].push_back(load.microseconds);
        heaps[i % 2].push_back(load.heapBytes);
    }
    const auto time = static_cast<double>(median(times[0]));
    const auto reference = static_cast<double>(median(times[1]));
    std::printf("load: %.2f times as long as the reference (medians of %d: %.0f us, %.0f us)\n",
                time / reference, count, time, reference);
    std::printf("heap after load: %lld bytes (reference: %lld bytes)\n", median(heaps[0]),
                median(heaps[1]));
    return 0;
}
