#include "Process.h"

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "Message.h"
#include "Spelling.h"

namespace logcat {
namespace {

constexpr size_t kGuessedAmong = 32;

bool beginsWith(std::string_view text, std::string_view beginning) {
    return text.substr(0, beginning.size()) == beginning;
}

}  // namespace

OpenCapture* Process::find(const Message& message) {
    const auto position = captures.find(message.name);
    if (position != captures.end()) {
        return &position->second;
    }
    const auto sameBeginning =
            std::find_if(captures.begin(), captures.end(), [&](const auto& each) {
                const auto& [name, open] = each;
                return (message.isNameCut && beginsWith(name, message.name)) ||
                       (open.isNameCut && beginsWith(message.name, name));
            });
    return sameBeginning != captures.end() ? &sameBeginning->second : nullptr;
}

void Process::setRemoved(const std::string& name) {
    if (!mRemoved.insert(name).second) {
        return;
    }
    mLastRemoved.push_back(name);
    if (mLastRemoved.size() > kGuessedAmong) {
        mLastRemoved.pop_front();
    }
}

std::string Process::guess(const std::string& name) const {
    std::vector<std::string_view> names(mLastRemoved.begin(), mLastRemoved.end());
    for (const auto& [each, open] : captures) {
        if (names.size() < 2 * kGuessedAmong) {
            names.emplace_back(each);
        }
    }
    return replay::didYouMean(name, names);
}

}  // namespace logcat
