#include "Process.h"

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>

#include "Message.h"

namespace logcat {
namespace {

constexpr size_t kFewMessages = 32;

bool beginsWith(std::string_view text, std::string_view beginning) {
    return text.substr(0, beginning.size()) == beginning;
}

}  // namespace

void Thread::setLast(const Message& message) {
    last.push_back(message);
    if (last.size() > (isKnown ? 1 : kFewMessages)) {
        last.pop_front();
    }
}

const Message* Thread::lastOn(const std::string& name) const {
    const auto position = std::find_if(last.rbegin(), last.rend(), [&](const Message& message) {
        return message.name == name;
    });
    return position != last.rend() ? &*position : nullptr;
}

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
