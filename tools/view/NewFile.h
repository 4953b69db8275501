// A file that appears under its name once it is whole.

#pragma once

#include <cstdio>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace view {

struct FileCloser {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using OwnedFile = std::unique_ptr<std::FILE, FileCloser>;

// What was written is not in the file, as on a full disk: no fault of the file's name.
class WriteFailure : public std::runtime_error {
    using std::runtime_error::runtime_error;
};

// Whether both names are of the same file, which need not exist yet.
bool nameOneFile(const std::string& one, const std::string& other);

// Writes to a temporary file in the same folder. A device or a pipe of that name is written to as
// it is; "-" is refused.
//
// What fails is thrown as std::runtime_error with a text for the user, which names the file; what
// fails once the file is open, as WriteFailure.
class NewFile {
  public:
    explicit NewFile(const std::string& path);
    // Without finish() nothing stays, and what was there before is as it was.
    ~NewFile();
    NewFile(const NewFile&) = delete;
    NewFile& operator=(const NewFile&) = delete;

    void write(std::string_view text);
    // Writes what is left. After that finish() only gives the file its name.
    void close();
    void finish();

    // Of the file once it is finished, without symbolic links.
    const std::string& target() const { return mTarget; }
    // Fails if the file is one of those that have been read.
    void refuse(const std::vector<std::string>& sources) const;

  private:
    std::string failure(const char* what) const;
    void createTemporary();

    std::string mPath;
    std::string mTarget;     // the path without symbolic links
    std::string mTemporary;  // empty: there is none
    OwnedFile mFile;
};

}  // namespace view
