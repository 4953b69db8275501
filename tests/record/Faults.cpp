// Stands in front of the C library's functions that write a recording, and fails as the variable
// FAULT says: "KIND NUMBER" fails with the call of that number. Files of other names are let be.

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/types.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <cstdlib>
#include <cstring>
#include <string>

namespace {

int recording = -1;
int opened = 0;
int written = 0;

const std::string& fault() {
    static const char* const text = std::getenv("FAULT");
    static const std::string kind = text != nullptr ? text : "";
    return kind;
}

// Whether this is the call to fail.
bool fails(const char* kind, int number) {
    return fault() == std::string(kind) + ' ' + std::to_string(number);
}

template <typename Function>
Function* next(const char* name) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

}  // namespace

extern "C" {

int open(const char* path, int flags, ...) {
    va_list arguments;
    va_start(arguments, flags);
    const auto mode = va_arg(arguments, mode_t);
    va_end(arguments);
    const bool isRecording = std::strstr(path, "/capture-") != nullptr;
    opened += isRecording ? 1 : 0;
    if (isRecording && fails("refused", opened)) {
        errno = EACCES;
        return -1;
    }
    const int descriptor = next<int(const char*, int, ...)>("open")(path, flags, mode);
    recording = isRecording ? descriptor : recording;
    return descriptor;
}

// Before each line the recorder looks whether the file is still its own.
int fstat(int descriptor, struct stat* status) {
    if (descriptor == recording && fails("closed", written)) {
        close(descriptor);
    } else if (descriptor == recording && fails("reused", written)) {
        const int another = next<int(const char*, int, ...)>("open")(
                std::getenv("ANOTHER"), O_CREAT | O_RDWR, mode_t{0600});
        dup2(another, descriptor);
    }
    return next<int(int, struct stat*)>("fstat")(descriptor, status);
}

ssize_t write(int descriptor, const void* data, size_t size) {
    static auto* const real = next<ssize_t(int, const void*, size_t)>("write");
    if (descriptor != recording) {
        return real(descriptor, data, size);
    }
    static bool isFull = false;
    static bool wasInterrupted = false;
    ++written;
    if (isFull) {
        errno = ENOSPC;
        return -1;
    }
    if (fails("full", written)) {
        isFull = true;
        return real(descriptor, data, size / 2);
    }
    wasInterrupted = !wasInterrupted;
    if (fault() == "interrupted" && wasInterrupted) {
        errno = EINTR;
        return -1;
    }
    return real(descriptor, data, fault() == "short" ? std::min<size_t>(size, 7) : size);
}

int renameat2Fails() {
    return fault() == "rename" ? 1 : 0;
}

long syscall(long number, ...) {
    va_list arguments;
    va_start(arguments, number);
    long values[6];
    for (long& value : values) {
        value = va_arg(arguments, long);
    }
    va_end(arguments);
    if (renameat2Fails() != 0) {
        errno = EINVAL;
        return -1;
    }
    return next<long(long, ...)>("syscall")(number, values[0], values[1], values[2], values[3],
                                            values[4], values[5]);
}

}  // extern "C"
