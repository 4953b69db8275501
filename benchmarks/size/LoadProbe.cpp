// Measures what loading a library costs: infosync-load-probe LIBRARY REFERENCE COUNT. Each load
// takes place in a process of its own, LIBRARY and REFERENCE in turn, and medians are printed.
// The overlap library must be out of sight: set INFOSYNC_HOST_ROOT to an empty folder.

#include <dlfcn.h>
#include <fcntl.h>
#include <malloc.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <vector>

namespace {

struct Load {
    long long nanoseconds;
    long long heapBytes;
};

Load loadHere(const char* library) {
    const auto heapBefore = static_cast<long long>(mallinfo2().uordblks);
    const auto begin = std::chrono::steady_clock::now();
    void* handle = dlopen(library, RTLD_NOW);
    const auto end = std::chrono::steady_clock::now();
    if (handle == nullptr) {
        std::fprintf(stderr, "infosync-load-probe: %s\n", dlerror());
        _exit(1);
    }
    return {std::chrono::nanoseconds(end - begin).count(),
            static_cast<long long>(mallinfo2().uordblks) - heapBefore};
}

// Loads in a child process. What the library prints while it loads is not shown.
Load loadInChild(const char* library) {
    int ends[2];
    if (pipe(ends) != 0) {
        std::perror("infosync-load-probe: pipe");
        std::exit(1);
    }
    const pid_t child = fork();
    if (child == 0) {
        const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
        dup2(nowhere, STDOUT_FILENO);
        const int errors = fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, 3);
        dup2(nowhere, STDERR_FILENO);
        const Load load = loadHere(library);
        dup2(errors, STDERR_FILENO);
        _exit(write(ends[1], &load, sizeof(load)) == sizeof(load) ? 0 : 1);
    }
    close(ends[1]);
    Load load{};
    const bool whole = read(ends[0], &load, sizeof(load)) == sizeof(load);
    close(ends[0]);
    int status = 0;
    waitpid(child, &status, 0);
    if (!whole || status != 0) {
        std::fprintf(stderr, "infosync-load-probe: %s did not load\n", library);
        std::exit(1);
    }
    return load;
}

template <typename Member>
long long median(std::vector<Load>& loads, Member member) {
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
    std::vector<Load> library;
    std::vector<Load> reference;
    for (int i = 0; i < count; ++i) {
        library.push_back(loadInChild(argv[1]));
        reference.push_back(loadInChild(argv[2]));
    }
    const long long libraryTime = median(library, &Load::nanoseconds);
    const long long referenceTime = median(reference, &Load::nanoseconds);
    std::printf("load: %.1f times as long as the reference (medians of %d: %lld us, %lld us)\n",
                static_cast<double>(libraryTime) / static_cast<double>(referenceTime), count,
                libraryTime / 1000, referenceTime / 1000);
    std::printf("heap after load: %lld bytes (reference: %lld bytes)\n",
                median(library, &Load::heapBytes), median(reference, &Load::heapBytes));
    return 0;
}
