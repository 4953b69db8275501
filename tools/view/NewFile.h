// A file that appears under its name once it is whole.

#pragma once

#include <cstdio>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace view {

struct FileCloser {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using OwnedFile = std::unique_ptr<std::FILE, FileCloser>;

// Whether both names are of the same file, which need not exist yet.
bool nameOneFile(const std::string& one, const std::string& other);

// Writes to a temporary file in the same folder. A device or a pipe of that name is written to as
// it is; "-" is refused.
//
// What fails is thrown as std::runtime_error with a text for the user, which names the file.
class NewFile {
  public:
    explicit NewFile(const std::string& path);
    // Without finish() nothing stays, and what was there before is as it was.
    ~NewFile();
    NewFile(const NewFile&) = delete;
    NewFile& operator=(const NewFile&) = delete;

    void write(std::string_view text);
    void finish();

    // Fails if the file is one of those that have been read.
    void refuse(const std::vector<std::string>& sources) const;

  private:
    [[noreturn]] void fail(const char* what) const;
    void createTemporary();

    std::string mPath;
    std::string mTarget;     // the path without symbolic links
    std::string mTemporary;  // empty: there is none
    OwnedFile mFile;
};

}  // namespace view
