#include "Input.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/types.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <ctime>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

#include "InputKind.h"

namespace logcat {
namespace {

[[noreturn]] void fail(const std::string& name, const std::string& what) {
    throw std::runtime_error(name + ": " + what);
}

class Descriptor {
  public:
    explicit Descriptor(int descriptor) : mDescriptor(descriptor) {}
    ~Descriptor() {
        if (mDescriptor > STDIN_FILENO) {
            close(mDescriptor);
        }
    }
    Descriptor(Descriptor&& other) noexcept : mDescriptor(std::exchange(other.mDescriptor, -1)) {}
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    Descriptor& operator=(Descriptor&&) = delete;

    int get() const { return mDescriptor; }

  private:
    int mDescriptor;
};

// A file, of which the first bytes have been looked at.
class FileInput : public Input {
  public:
    FileInput(const std::string& name, int64_t date, Descriptor file)
        : Input(name, date), mFile(std::move(file)) {
        while (mBeginning.size() < kBeginning) {
            char bytes[kBeginning];
            const size_t length = readFile(bytes, kBeginning - mBeginning.size());
            if (length == 0) {
                break;
            }
            mBeginning.append(bytes, length);
        }
    }

    size_t read(char* buffer, size_t size) override {
        if (mTaken == mBeginning.size()) {
            return readFile(buffer, size);
        }
        const size_t length = mBeginning.copy(buffer, size, mTaken);
        mTaken += length;
        return length;
    }

    std::string_view beginning() const { return mBeginning; }

  private:
    static constexpr size_t kBeginning = 16;

    size_t readFile(char* buffer, size_t size) {
        ssize_t length = 0;
        do {
            length = ::read(mFile.get(), buffer, size);
        } while (length < 0 && errno == EINTR);
        if (length < 0) {
            fail(name(), errno == EISDIR ? "is a directory"
                                         : std::string("cannot read: ") + std::strerror(errno));
        }
        return static_cast<size_t>(length);
    }

    Descriptor mFile;
    std::string mBeginning;
    size_t mTaken = 0;
};

}  // namespace

std::unique_ptr<Input> openInput(const std::string& path) {
    const bool isStandardInput = path == "-";
    const std::string name = isStandardInput ? "standard input" : path;
    Descriptor file(isStandardInput ? STDIN_FILENO : open(path.c_str(), O_RDONLY | O_CLOEXEC));
    struct stat status {};
    if (file.get() < 0 || fstat(file.get(), &status) != 0) {
        fail(name, std::string("cannot open: ") + std::strerror(errno));
    }
    const bool isFile = S_ISREG(status.st_mode);
    const int64_t date = isFile ? status.st_mtime : std::time(nullptr);
    auto input = std::make_unique<FileInput>(name, date, std::move(file));
    const std::string_view beginning = input->beginning();
    if (beginning.empty()) {
        fail(name, "is empty");
    }
    if (beginning.substr(0, 2) == "PK") {
        if (!isFile || isStandardInput) {
            fail(name, "is a zip archive, which is read from a file only");
        }
        return openZippedReport(path, date);
    }
    const std::string kind = replay::compressedKind(beginning, "a logcat");
    if (!kind.empty()) {
        fail(name, kind);
    }
    return input;
}

}  // namespace logcat
