#include "Process.h"

#include <algorithm>
#include <string_view>

#include "Message.h"

namespace logcat {
namespace {

bool beginsWith(std::string_view text, std::string_view beginning) {
    return text.substr(0, beginning.size()) == beginning;
}

}  // namespace

OpenCapture* Process::find(const Message& message) {
    const auto position = captures.find(message.name);
    if (position != captures.end()) {
        return &position->second;
    }
    if (!message.isNameCut && !hasCutNames) {
        return nullptr;
    }
    const auto sameBeginning =
            std::find_if(captures.begin(), captures.end(), [&](const auto& each) {
                const auto& [name, open] = each;
                return (message.isNameCut && beginsWith(name, message.name)) ||
                       (open.isNameCut && beginsWith(message.name, name));
            });
    return sameBeginning != captures.end() ? &sameBeginning->second : nullptr;
}

}  // namespace logcat
