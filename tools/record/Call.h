// A call that is about to be made.

#pragma once

#include <string>
#include <string_view>

namespace recording {

struct Call {
    enum class Kind { kRegister, kUnregister, kFlush, kUpdate, kCommand, kRequest };

    std::string_view name;
    Kind kind;
    const std::string* image;  // null: it belongs to none
    bool isOther = false;      // made on the manager of GetInstance()
    bool isSeen = false;       // what the service answers it will be seen, if it asks

    // A command is a request that asks the service; the other requests do not.
    bool isRequest() const { return kind == Kind::kCommand || kind == Kind::kRequest; }
    bool asks() const { return kind != Kind::kUpdate && kind != Kind::kRequest; }
};

}  // namespace recording
