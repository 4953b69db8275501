// A capture log that is read line by line, more than once.

#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace replay {

struct FileCloser {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, FileCloser>;

// Needs the same memory for every log: a line of more bytes than the longest is skipped.
class LogFile {
  public:
    static constexpr size_t kLongestLine = size_t{1} << 20;
    static constexpr size_t kLongestRecordedLine = size_t{1} << 26;

    // Opens a file, or standard input for "-". What cannot be read twice, as a pipe, is copied
    // to a temporary file first. Throws std::runtime_error with a text for the user.
    explicit LogFile(const std::string& path);

    // Reads the next line, without its newline; the last one may lack it. Returns false at the
    // end. Throws std::runtime_error if the file cannot be read.
    bool next(std::string& line);
    // Goes back to the first line.
    void rewind();
    // Before the first line: up to 64 KiB that the log begins with, until a line is read.
    std::string_view beginning();
    void setLongestLine(size_t bytes) { mLongest = bytes; }  // kLongestLine as long as not called
    size_t longestLine() const { return mLongest; }

    const std::string& name() const { return mName; }
    std::string place() const;                           // of the last line: "LOG:LINE", printable
    bool lineIsWhole() const { return mWhole; }          // the last line has its newline
    uint64_t lineNumber() const { return mLineNumber; }  // of the last line; the first has 1
    bool lineIsTooLong() const { return mTooLong; }      // the last line; its text is not valid
    uint64_t size() const { return mSize; }              // in bytes
    uint64_t position() const { return mPosition; }      // bytes of the lines read so far

  private:
    bool fill();
    void append(std::string& line, const char* text, size_t length);

    std::string mName;  // for messages
    File mFile;
    std::vector<char> mBuffer;
    size_t mBegin = 0;  // the unread part of mBuffer
    size_t mEnd = 0;
    uint64_t mSize = 0;
    uint64_t mPosition = 0;
    uint64_t mLineNumber = 0;
    size_t mLongest = kLongestLine;
    bool mTooLong = false;
    bool mWhole = false;
};

}  // namespace replay
