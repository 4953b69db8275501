// The files that a recording is written to.

#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace recording {

// Why a recording cannot go on.
struct Fault {
    const char* what;
    int error;  // an errno
};

// Which file a descriptor stands for.
struct FileId {
    uint64_t device = 0;
    uint64_t inode = 0;
    bool operator==(const FileId& other) const {
        return device == other.device && inode == other.inode;
    }
};

// Two files by turns: when a part is full the next begins, and the one before it is removed. So
// the newest half or more of what may be kept is always there.
//
// Nothing here overwrites a file, follows a link, or writes to a descriptor that somebody else has
// closed and opened anew. What fails is thrown as a Fault. Not safe against itself: one thread at
// a time.
class RecordFile {
  public:
    // The parts together take no more than `limit` bytes.
    RecordFile(std::string folder, uint64_t limit);
    // Closes what is open.
    ~RecordFile();
    RecordFile(const RecordFile&) = delete;
    RecordFile& operator=(const RecordFile&) = delete;

    // Begins the next part with its header. A part is never seen under its name without one.
    void beginPart(std::string_view header);

    // Whether the open part has room for so many bytes; false while none is open.
    bool hasRoomFor(size_t bytes) const;

    // Adds a whole line, or, if that fails, nothing. `now` is in nanoseconds, by any clock.
    void append(std::string_view line, int64_t now);

    // Of the open part; before the first and after a failed beginPart, of the one that is meant.
    const std::string& path() const { return mPath; }
    uint64_t partsBegun() const { return mPart; }
    // The most bytes of one part.
    uint64_t partLimit() const { return mPartLimit; }

  private:
    std::string pathOf(uint64_t part) const;
    void setStart();
    bool makeUnseen(std::string_view header);
    void open(const std::string& path);
    void write(std::string_view text);
    bool isStillOurs(int64_t now);
    bool isStillOurs() const;
    void close();

    const std::string mFolder;
    uint64_t mPartLimit;
    std::string mStart;  // UTC, as the names have it
    std::string mPath;
    uint64_t mPart = 0;
    uint64_t mSize = 0;  // whole lines of the open part
    int mDescriptor = -1;
    FileId mId;
    int64_t mLookedAt = 0;  // when the identity was last compared
};

}  // namespace recording
