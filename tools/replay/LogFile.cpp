#include "LogFile.h"

#include <fcntl.h>
#include <stdio.h>  // fdopen, fileno
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <stdexcept>
#include <string>
#include <string_view>

#include "Printable.h"

namespace replay {
namespace {

constexpr size_t kBufferSize = size_t{1} << 16;

[[noreturn]] void fail(const std::string& name, const char* what) {
    throw std::runtime_error(name + ": " + what + ": " + std::strerror(errno));
}

File openLog(const std::string& path, const std::string& name) {
    // Through a duplicate, so that closing the log leaves standard input open.
    const int descriptor = path == "-" ? fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 0)
                                       : open(path.c_str(), O_RDONLY | O_CLOEXEC);
    File file(descriptor >= 0 ? fdopen(descriptor, "rb") : nullptr);
    if (file == nullptr) {
        fail(name, "cannot open");
    }
    return file;
}

// Copies what is left to read of `source`.
File copyToTemporary(std::FILE* source, const std::string& name) {
    File copy(std::tmpfile());
    if (copy == nullptr) {
        fail(name, "cannot create a temporary file");
    }
    char buffer[kBufferSize];
    while (const size_t length = std::fread(buffer, 1, sizeof(buffer), source)) {
        if (std::fwrite(buffer, 1, length, copy.get()) != length) {
            fail(name, "cannot write the temporary file");
        }
    }
    if (std::ferror(source) != 0) {
        fail(name, "cannot read");
    }
    if (std::fflush(copy.get()) != 0) {
        fail(name, "cannot write the temporary file");
    }
    return copy;
}

struct stat statusOf(std::FILE* file, const std::string& name) {
    struct stat status {};
    if (fstat(fileno(file), &status) != 0) {
        fail(name, "cannot get the file's size");
    }
    return status;
}

}  // namespace

LogFile::LogFile(const std::string& path)
    : mName(path == "-" ? "standard input" : path), mFile(openLog(path, mName)) {
    const bool isRegular = S_ISREG(statusOf(mFile.get(), mName).st_mode);
    if (!isRegular || path == "-") {
        mFile = copyToTemporary(mFile.get(), mName);
    }
    mSize = static_cast<uint64_t>(statusOf(mFile.get(), mName).st_size);
    mBuffer.resize(kBufferSize);
    rewind();
}

bool LogFile::fill() {
    mBegin = 0;
    mEnd = std::fread(mBuffer.data(), 1, mBuffer.size(), mFile.get());
    if (mEnd == 0 && std::ferror(mFile.get()) != 0) {
        fail(mName, "cannot read");
    }
    return mEnd != 0;
}

void LogFile::append(std::string& line, const char* text, size_t length) {
    mTooLong = mTooLong || line.size() + length > mLongest;
    if (!mTooLong) {
        line.append(text, length);
    }
}

bool LogFile::next(std::string& line) {
    line.clear();
    mTooLong = false;
    mWhole = false;
    bool any = false;
    while (mBegin != mEnd || fill()) {
        if (!any) {
            any = true;
            ++mLineNumber;
        }
        const char* text = mBuffer.data() + mBegin;
        const auto* newline = static_cast<const char*>(std::memchr(text, '\n', mEnd - mBegin));
        const size_t length =
                newline != nullptr ? static_cast<size_t>(newline - text) : mEnd - mBegin;
        append(line, text, length);
        const size_t used = length + (newline != nullptr ? 1 : 0);
        mBegin += used;
        mPosition += used;
        if (newline != nullptr) {
            mWhole = true;
            return true;
        }
    }
    return any;
}

void LogFile::rewind() {
    if (std::fseek(mFile.get(), 0, SEEK_SET) != 0) {
        fail(mName, "cannot go back to the start");
    }
    mBegin = mEnd = 0;
    mPosition = 0;
    mLineNumber = 0;
}

std::string_view LogFile::beginning() {
    if (mBegin == mEnd) {
        fill();
    }
    return {mBuffer.data(), mEnd};
}

std::string LogFile::place() const {
    return printable(mName) + ':' + std::to_string(mLineNumber);
}

}  // namespace replay
