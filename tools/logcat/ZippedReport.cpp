// Reads the bug report out of its archive, without unpacking it to the disk.

#include <zip.h>
#include <zipconf.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>

#include "Input.h"

namespace logcat {
namespace {

constexpr char kMainEntry[] = "main_entry.txt";  // its text is the name of the report

struct ZipCloser {
    void operator()(zip_t* archive) const { zip_discard(archive); }
    void operator()(zip_file_t* file) const { zip_fclose(file); }
};
using Archive = std::unique_ptr<zip_t, ZipCloser>;
using Entry = std::unique_ptr<zip_file_t, ZipCloser>;

[[noreturn]] void fail(const std::string& name, const std::string& what) {
    throw std::runtime_error(name + ": " + what);
}

class ZippedReport : public Input {
  public:
    ZippedReport(const std::string& path, int64_t date, Archive archive, Entry entry)
        : Input(path, date), mArchive(std::move(archive)), mEntry(std::move(entry)) {}

    size_t read(char* buffer, size_t size) override {
        const zip_int64_t length = zip_fread(mEntry.get(), buffer, size);
        if (length < 0) {
            fail(name(), std::string("the report in the archive cannot be read: ") +
                                 zip_file_strerror(mEntry.get()));
        }
        return static_cast<size_t>(length);
    }

  private:
    Archive mArchive;
    Entry mEntry;
};

std::string readName(zip_t* archive) {
    constexpr size_t kLongestName = 4096;
    const Entry entry(zip_fopen(archive, kMainEntry, 0));
    std::string text(kLongestName, '\0');
    const zip_int64_t length =
            entry != nullptr ? zip_fread(entry.get(), text.data(), text.size()) : -1;
    text.resize(length > 0 ? static_cast<size_t>(length) : 0);
    return text.substr(0, text.find_first_of("\r\n"));
}

}  // namespace

std::unique_ptr<Input> openZippedReport(const std::string& path, int64_t date) {
    Archive archive(zip_open(path.c_str(), ZIP_RDONLY, nullptr));
    if (archive == nullptr) {
        fail(path, "is a zip archive that cannot be read");
    }
    const std::string report = readName(archive.get());
    if (report.empty()) {
        fail(path, std::string("is a zip archive without a bug report: it has no ") + kMainEntry);
    }
    Entry entry(zip_fopen(archive.get(), report.c_str(), 0));
    if (entry == nullptr) {
        fail(path, "is a zip archive without the bug report that its " + std::string(kMainEntry) +
                           " names, " + report);
    }
    return std::make_unique<ZippedReport>(path, date, std::move(archive), std::move(entry));
}

}  // namespace logcat
