// Stands in front of the C library's functions that write a recording. The variable FAULT names
// the one that fails, and its call: "full 6" is the sixth write. Other files are let be.
//
// Without static objects that have to be made: the C++ library makes them by system calls.

#include <dlfcn.h>
#include <fcntl.h>
#include <pthread.h>
#include <sys/syscall.h>
#include <sys/types.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <cstring>

namespace {

int recording = -1;
std::atomic<int> writes{0};

// Whether FAULT is this one, and a call of this number the one that is meant.
bool fails(const char* fault, int number = 0) {
    const char* const text = std::getenv("FAULT");
    const size_t length = std::strlen(fault);
    return text != nullptr && std::strncmp(text, fault, length) == 0 &&
           std::atoi(text + length) == number;
}

int fail(int error) {
    errno = error;
    return -1;
}

template <typename Result, typename... Arguments>
Result real(const char* name, Arguments... arguments) {
    return reinterpret_cast<Result (*)(Arguments...)>(dlsym(RTLD_NEXT, name))(arguments...);
}

}  // namespace

extern "C" {

// Declared with "..." elsewhere; the arguments come in the same registers.
int openFile(const char* path, int flags, mode_t mode) __asm__("open");
int openFile(const char* path, int flags, mode_t mode) {
    const bool isRecording = std::strstr(path, "/capture-") != nullptr;
    if (isRecording && fails("refused")) {
        return fail(EACCES);
    }
    const int descriptor = real<int>("open", path, flags, mode);
    recording = isRecording ? descriptor : recording;
    return descriptor;
}

// The recorder looks, before each line, whether the file is still its own: by how far it has come,
// and now and then by its identity.
off_t lseek(int descriptor, off_t offset, int whence) noexcept {
    const auto position = real<off_t>("lseek", descriptor, offset, whence);
    if (descriptor == recording && fails("closed", writes)) {
        close(descriptor);
    }
    const bool isAsFar = fails("same place", writes);
    if (descriptor == recording && (isAsFar || fails("reused", writes))) {
        const int another = openFile("another", O_CREAT | O_RDWR, 0600);
        if (another >= 0) {
            real<off_t>("lseek", another, isAsFar ? position : 0, SEEK_SET);
            dup2(another, descriptor);
        }
    }
    return real<off_t>("lseek", descriptor, offset, whence);
}

ssize_t write(int descriptor, const void* data, size_t size) {
    if (descriptor == recording) {
        static bool isFull = false;
        ++writes;
        if (isFull || (fails("interrupted") && writes % 2 != 0)) {
            return fail(isFull ? ENOSPC : EINTR);
        }
        isFull = fails("full", writes);
        size = isFull ? size / 2 : fails("short") ? std::min<size_t>(size, 7) : size;
    }
    return real<ssize_t>("write", descriptor, data, size);
}

// Not a fault: leaves others time between a line and what the call then does.
int pthread_mutex_unlock(pthread_mutex_t* mutex) noexcept {
    static std::atomic<int (*)(pthread_mutex_t*)> unlock{nullptr};
    static std::atomic<unsigned> calls{0};
    if (unlock == nullptr) {
        unlock = reinterpret_cast<int (*)(pthread_mutex_t*)>(
                dlsym(RTLD_NEXT, "pthread_mutex_unlock"));
    }
    const int result = unlock.load()(mutex);
    if (writes > 0 && calls++ % 5 == 0 && fails("late")) {
        usleep(20);
    }
    return result;
}

long systemCall(long number, long a, void* b, long c, long d, long e, long f) __asm__("syscall");
long systemCall(long number, long a, void* b, long c, long d, long e, long f) {
    const long result = number == SYS_renameat2 && fails("rename")
                                ? fail(EINVAL)
                                : real<long>("syscall", number, a, b, c, d, e, f);
    // The time of day may be set while somebody waits.
    if (number == SYS_clock_gettime && a == CLOCK_REALTIME && fails("ahead")) {
        static_cast<timespec*>(b)->tv_sec += 3600;
    }
    return result;
}

}  // extern "C"
