#include "NewFile.h"

#include <fcntl.h>   // open
#include <stdio.h>   // fdopen
#include <unistd.h>  // getpid, unlink

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

namespace view {
namespace {

namespace fs = std::filesystem;

constexpr int kMostNames = 100;  // that are tried

// Whether there is something that a file must not take the place of.
bool isSpecial(const std::string& path) {
    std::error_code ignored;
    const fs::file_status status = fs::status(path, ignored);
    return fs::exists(status) && !fs::is_regular_file(status);
}

std::string withoutLinks(const std::string& path) {
    std::error_code error;
    const fs::path real = fs::canonical(path, error);
    return error ? path : real.string();
}

}  // namespace

bool nameOneFile(const std::string& one, const std::string& other) {
    const auto whole = [](const std::string& path) {
        std::error_code error;
        const fs::path real = fs::weakly_canonical(fs::absolute(path), error);
        return error ? fs::path(path) : real;
    };
    return one == other || whole(one) == whole(other);
}

NewFile::NewFile(const std::string& path) : mPath(path), mTarget(withoutLinks(path)) {
    if (path == "-") {
        throw std::runtime_error("standard output cannot be written to here; please name a file");
    }
    if (isSpecial(mTarget)) {
        mFile.reset(std::fopen(mTarget.c_str(), "w"));
    } else {
        createTemporary();
    }
    if (mFile == nullptr) {
        fail("cannot be opened for writing");
    }
}

NewFile::~NewFile() {
    if (!mTemporary.empty()) {
        unlink(mTemporary.c_str());
    }
}

// Its name is short whatever the target's is, which may be as long as names can be.
void NewFile::createTemporary() {
    const fs::path folder = fs::path(mTarget).parent_path();
    for (int i = 0; i < kMostNames; ++i) {
        const std::string name = ".infosync-" + std::to_string(getpid()) + "-" + std::to_string(i);
        const std::string path = (folder / name).string();
        const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
        if (file >= 0) {
            mTemporary = path;
            mFile.reset(fdopen(file, "w"));
            return;
        }
        if (errno != EEXIST) {
            return;
        }
    }
}

void NewFile::write(std::string_view text) {
    if (std::fwrite(text.data(), 1, text.size(), mFile.get()) != text.size()) {
        fail("cannot be written");
    }
}

void NewFile::finish() {
    if (std::fclose(mFile.release()) != 0) {
        fail("cannot be written");
    }
    if (mTemporary.empty()) {
        return;
    }
    if (std::rename(mTemporary.c_str(), mTarget.c_str()) != 0) {
        fail("cannot be put in place");
    }
    mTemporary.clear();
}

void NewFile::refuse(const std::vector<std::string>& sources) const {
    for (const std::string& source : sources) {
        std::error_code ignored;
        if (fs::equivalent(source, mTarget, ignored)) {
            throw std::runtime_error(mPath + ": has been read, and would be overwritten");
        }
    }
}

void NewFile::fail(const char* what) const {
    throw std::runtime_error(mPath + ": " + what + ": " + std::strerror(errno));
}

}  // namespace view
