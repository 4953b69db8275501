// The bytes of a logcat or a bug report, read once from front to back.

#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>

namespace logcat {

class Input {
  public:
    // `name` is for messages; `date` is when the input was last changed.
    Input(std::string name, int64_t date) : mName(std::move(name)), mDate(date) {}
    virtual ~Input() = default;
    Input(const Input&) = delete;
    Input& operator=(const Input&) = delete;

    // Puts up to `size` bytes into `buffer` and returns how many; 0 at the end. Throws
    // std::runtime_error with a text for the user.
    virtual size_t read(char* buffer, size_t size) = 0;

    const std::string& name() const { return mName; }
    int64_t date() const { return mDate; }  // seconds since 1970

  private:
    std::string mName;
    int64_t mDate;
};

// Opens a file, or standard input for "-". Of a zip archive the bug report in it is read. Throws
// std::runtime_error with a text for the user, also if the file is empty or is known to be
// something else.
std::unique_ptr<Input> openInput(const std::string& path);

// Opens the bug report in a zip archive; throws as openInput.
std::unique_ptr<Input> openZippedReport(const std::string& path, int64_t date);

}  // namespace logcat
