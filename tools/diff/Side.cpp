#include "Side.h"

#include <sys/stat.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <ios>
#include <iterator>
#include <memory>
#include <stdexcept>
#include <string>
#include <system_error>
#include <vector>

#include "Captured.h"
#include "ChildProcess.h"
#include "Printable.h"
#include "Row.h"
#include "RowReader.h"
#include "StopSignals.h"
#include "TemporaryFolder.h"

namespace diff {
namespace {

namespace fs = std::filesystem;

[[noreturn]] void fail(const std::string& path, const std::string& what) {
    throw std::runtime_error(replay::printable(path) + ": " + what);
}

// The programs lie beside this one once they are installed, and in folders of their own in the
// build folder.
std::string programPath(const std::string& name, const std::string& buildFolder) {
    std::error_code error;
    const fs::path folder = fs::read_symlink("/proc/self/exe", error).parent_path();
    const fs::path beside = folder / name;
    return fs::exists(beside, error) ? beside : folder.parent_path() / buildFolder / name;
}

void refuseWhatIsNoFile(const std::string& path) {
    struct stat status {};
    if (path == "-") {
        throw std::runtime_error("standard input cannot be compared; please name a file");
    }
    if (stat(path.c_str(), &status) != 0) {
        fail(path, std::string("cannot open: ") + std::strerror(errno));
    }
    if (!S_ISREG(status.st_mode)) {
        fail(path, "is neither a file nor a folder of rows");
    }
    const std::string name = fs::path(path).filename();
    if (name == rows::kCapturesFile || name == rows::kNodesFile || name == rows::kRunFile) {
        fail(path, "is one of three files of rows; please name their folder");
    }
}

std::string contentOf(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

}  // namespace

bool isCaptureLog(const std::string& path) {
    constexpr char kByteOrderMark[] = "\xef\xbb\xbf";
    std::ifstream file(path, std::ios::binary);
    char bytes[3] = {};
    file.read(bytes, sizeof(bytes));
    const std::string beginning(bytes, static_cast<size_t>(file.gcount()));
    return beginning.empty() || beginning == kByteOrderMark ||
           beginning.find_first_of("{# \t\r\n") == 0;
}

Side::Side(const std::string& path) : mPath(path) {
    if (rows::isRowFolder(path)) {
        return;
    }
    refuseWhatIsNoFile(path);
    mFolder = std::make_unique<TemporaryFolder>();
    const std::string file = path[0] == '-' ? "./" + path : path;
    std::vector<std::string> command = {program(), file, "--quiet", "--rows",
                                        mFolder->path() + "/rows"};
    if (isCaptureLog(path)) {
        command.insert(command.end(), {"--log-level", "silent"});
    }
    mChild = std::make_unique<ChildProcess>(command, mFolder->path() + "/said");
}

std::string Side::program() const {
    return isCaptureLog(mPath) ? programPath("infosync-replay", "replay")
                               : programPath("infosync-logcat", "logcat");
}

void Side::waitForRows() {
    const int status = mChild->wait();
    mChild.reset();
    if (StopSignals::received() != 0) {
        throw std::runtime_error("");
    }
    const std::string said = contentOf(mFolder->path() + "/said");
    std::fputs(said.c_str(), stderr);
    if (status != 0) {
        throw std::runtime_error(said.empty()
                                         ? replay::printable(mPath) + ": " + program() +
                                                   " ended with status " + std::to_string(status)
                                         : "");
    }
}

std::unique_ptr<CaptureReader> Side::open() {
    if (mFolder == nullptr) {
        return std::make_unique<CaptureReader>(rows::rowFolder(mPath));
    }
    waitForRows();
    auto reader = std::make_unique<CaptureReader>(rows::rowFolder(mFolder->path() + "/rows"));
    mFolder->remove();
    return reader;
}

}  // namespace diff
