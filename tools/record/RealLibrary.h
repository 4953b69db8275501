// Finds the library's own operations behind the recorder's.

#pragma once

#include <cstdint>
#include <cstring>

namespace recording {

// The definition that would be called if the recorder were not there, of the operation whose
// definition in the recorder lies at `own`. If there is none, that is logged as an error, and the
// result is null.
void* findReal(void* own);

// A pointer to a function, which is not virtual if it is a member.
template <typename Function>
void* addressOf(Function function) {
    void* address = nullptr;
    std::memcpy(static_cast<void*>(&address), static_cast<const void*>(&function), sizeof(address));
    return address;
}

// Back again. The platform's C++ interface gives a pointer to a member a second word, which is
// an offset: zero here.
template <typename Function>
Function functionAt(void* address) {
    const struct {
        void* address;
        intptr_t offset;
    } parts{address, 0};
    static_assert(sizeof(Function) <= sizeof(parts), "another C++ interface");
    Function function;
    std::memcpy(static_cast<void*>(&function), &parts, sizeof(function));
    return function;
}

}  // namespace recording
