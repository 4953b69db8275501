#include "RecordFile.h"

#include <fcntl.h>
#include <linux/fs.h>
#include <stdio.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/sysmacros.h>
#include <sys/types.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace recording {
namespace {

// What a process may write to one file; past it, a signal would end the process.
uint64_t fileSizeLimit() {
    rlimit limit{};
    return getrlimit(RLIMIT_FSIZE, &limit) == 0 ? limit.rlim_cur : UINT64_MAX;
}

// Does not ask for times: since Linux 6.13, once they have been asked for, the next write to the
// file takes half as long again. By number, because the C library may not have the function.
std::optional<FileId> fileOf(int descriptor) {
    struct statx status {};
    if (syscall(SYS_statx, descriptor, "", AT_EMPTY_PATH, STATX_INO, &status) == 0) {
        return FileId{makedev(status.stx_dev_major, status.stx_dev_minor), status.stx_ino};
    }
    struct stat older {};
    if (errno == ENOSYS && fstat(descriptor, &older) == 0) {
        return FileId{older.st_dev, older.st_ino};
    }
    return std::nullopt;
}

std::string utc(time_t time) {
    tm parts{};
    char text[32];
    return {text, strftime(text, sizeof(text), "%Y%m%dT%H%M%SZ", gmtime_r(&time, &parts))};
}

}  // namespace

RecordFile::RecordFile(std::string folder, uint64_t limit)
    : mFolder(std::move(folder)), mPartLimit(limit / 2), mPath(mFolder) {}

RecordFile::~RecordFile() {
    close();
}

std::string RecordFile::pathOf(uint64_t part) const {
    std::string path = mFolder + "/capture-" + mStart + '-' + std::to_string(getpid());
    if (part > 1) {
        path += '.' + std::to_string(part);
    }
    return path + ".jsonl";
}

// The second of the start, or, where a recording has that name, the next that is free.
void RecordFile::setStart() {
    constexpr int kMostTries = 60;
    const time_t now = time(nullptr);
    for (int i = 0; i < kMostTries; ++i) {
        mStart = utc(now + i);
        struct stat status {};
        if (lstat(pathOf(1).c_str(), &status) != 0) {
            return;
        }
    }
}

void RecordFile::beginPart(std::string_view header) {
    if (mPart == 0) {
        setStart();
    }
    close();
    if (mPart > 1) {
        unlink(pathOf(mPart - 1).c_str());
    }
    ++mPart;
    mPath = pathOf(mPart);
    mPartLimit = std::min(mPartLimit, fileSizeLimit());
    if (header.size() > mPartLimit / 2) {
        throw Fault{"its header does not fit", EFBIG};
    }
    if (!makeUnseen(header)) {
        open(mPath);
        write(header);
    }
    mSize = header.size();
}

// Gives the file its name once its header is in it, so that a process that is killed leaves none
// without. Returns false where a file system cannot do that without perhaps replacing another
// file. By number, because the C library may not have the function.
bool RecordFile::makeUnseen(std::string_view header) {
    const std::string unseen = mPath + ".new";
    open(unseen);
    try {
        write(header);
    } catch (const Fault&) {
        unlink(unseen.c_str());
        throw;
    }
    if (syscall(SYS_renameat2, AT_FDCWD, unseen.c_str(), AT_FDCWD, mPath.c_str(),
                RENAME_NOREPLACE) == 0) {
        return true;
    }
    const int error = errno;
    unlink(unseen.c_str());
    close();
    if (error != EINVAL && error != ENOSYS) {
        throw Fault{"cannot be made", error};
    }
    return false;
}

void RecordFile::open(const std::string& path) {
    constexpr int kFlags = O_CREAT | O_EXCL | O_APPEND | O_CLOEXEC | O_WRONLY | O_NOFOLLOW;
    constexpr mode_t kOwnerOnly = 0600;
    mDescriptor = ::open(path.c_str(), kFlags, kOwnerOnly);
    std::optional<FileId> id;
    if (mDescriptor >= 0) {
        id = fileOf(mDescriptor);
    }
    if (!id.has_value()) {
        throw Fault{"cannot be made", errno};
    }
    mId = *id;
}

bool RecordFile::hasRoomFor(size_t bytes) const {
    return mDescriptor >= 0 && bytes <= mPartLimit - mSize;
}

// Where the descriptor stands tells another file as well, unless both have come equally far, and in
// half the time: what file it is is asked at most once per millisecond.
bool RecordFile::isStillOurs(int64_t now) {
    constexpr int64_t kMillisecond = 1000000;
    if (lseek(mDescriptor, 0, SEEK_CUR) != static_cast<off_t>(mSize)) {
        return false;
    }
    if (now - mLookedAt < kMillisecond) {
        return true;
    }
    mLookedAt = now;
    return isStillOurs();
}

bool RecordFile::isStillOurs() const {
    const std::optional<FileId> id = fileOf(mDescriptor);
    return id.has_value() && *id == mId;
}

void RecordFile::append(std::string_view line, int64_t now) {
    if (!isStillOurs(now)) {
        mDescriptor = -1;  // whatever it is now, it is not to be closed here
        throw Fault{"has been closed by somebody else", EBADF};
    }
    try {
        write(line);
    } catch (const Fault&) {
        if (isStillOurs()) {
            // If that fails as well, the file ends within a line.
            [[maybe_unused]] const int ignored = ftruncate(mDescriptor, static_cast<off_t>(mSize));
        }
        throw;
    }
    mSize += line.size();
}

void RecordFile::write(std::string_view text) {
    while (!text.empty()) {
        const ssize_t written = ::write(mDescriptor, text.data(), text.size());
        if (written > 0) {
            text.remove_prefix(static_cast<size_t>(written));
        } else if (written == 0 || errno != EINTR) {
            throw Fault{"cannot be written", written == 0 ? EIO : errno};
        }
    }
}

void RecordFile::close() {
    if (mDescriptor >= 0 && isStillOurs()) {
        ::close(mDescriptor);
    }
    mDescriptor = -1;
}

}  // namespace recording
