#include "ServiceAnswers.h"

#include <cstdlib>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <utility>

namespace replay {
namespace {

std::string answerOfEnvironment() {
    const char* answer = std::getenv("INFOSYNC_HOST_ANSWER");
    return answer != nullptr ? answer : "enabled";
}

}  // namespace

ServiceAnswers::ServiceAnswers(std::optional<std::string> always)
    : mAlways(std::move(always)), mOtherwise(answerOfEnvironment()) {}

void ServiceAnswers::restart(std::map<std::string, std::string> answers) {
    const std::lock_guard<std::mutex> lock(mMutex);
    mAnswers = std::move(answers);
}

std::string ServiceAnswers::of(const std::string& key) const {
    if (mAlways) {
        return *mAlways;
    }
    const std::lock_guard<std::mutex> lock(mMutex);
    const auto answer = mAnswers.find(key);
    return answer != mAnswers.end() ? answer->second : mOtherwise;
}

void ServiceAnswers::set(const std::string& key, const std::string& answer) {
    const std::lock_guard<std::mutex> lock(mMutex);
    mAnswers[key] = answer;
}

}  // namespace replay
