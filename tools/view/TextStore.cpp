#include "TextStore.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <stdexcept>
#include <string>

namespace view {
namespace {

void require(bool holds) {
    if (!holds) {
        throw std::runtime_error(std::string("cannot keep a report in a temporary file: ") +
                                 std::strerror(errno));
    }
}

}  // namespace

TextStore::Slot TextStore::add(const std::string& text) {
    if (mFile == nullptr) {
        mFile.reset(std::tmpfile());
        require(mFile != nullptr);
    }
    require(std::fseek(mFile.get(), 0, SEEK_END) == 0);
    const Slot slot{std::ftell(mFile.get()), text.size()};
    require(slot.begin >= 0);
    require(std::fwrite(text.data(), 1, text.size(), mFile.get()) == text.size());
    return slot;
}

std::string TextStore::at(const Slot& slot) const {
    std::string text(slot.size, '\0');
    require(std::fseek(mFile.get(), slot.begin, SEEK_SET) == 0);
    require(std::fread(text.data(), 1, slot.size, mFile.get()) == slot.size);
    return text;
}

}  // namespace view
