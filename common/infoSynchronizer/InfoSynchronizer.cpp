#include "InfoSynchronizer.h"

#include <atomic>
#include <mutex>
#include <string>
#include <utility>

#include "InfoSyncType.h"
#include "IntentAwareSys.h"
#include "Log.h"
#include "LogSites.h"
#include "OverlapClientTmpl.h"

namespace camInfosync {
namespace {

constexpr char kLogTag[] = "ZuAlgoEngine";

}  // namespace

// The overlap library is loaded here, while this library is being loaded itself and before
// any synchronizer exists.
IntentAwareSys* InfoSynchronizer::mIntentAwareImpl =
        zu_hal_overlap::OverlapClientTmpl::GetIntentAwareSys();

InfoSynchronizer::InfoSynchronizer() : mStatus(1) {
    if (mIntentAwareImpl != nullptr) {
        // Deliberate: the text begins with a blank.
        INFOSYNC_LOGI(site::kSynchronizerConstruct, " mIntentAwareImpl is %p",
                      static_cast<void*>(mIntentAwareImpl));
    }
}

InfoSynchronizer::~InfoSynchronizer() = default;

void InfoSynchronizer::requestInfo(const void* /*in*/) {}

void* InfoSynchronizer::requestCmd(const void* /*in*/) {
    return nullptr;
}

CmdExecutor::CmdExecutor(InfoSyncType /*type*/) {}

CmdExecutor::~CmdExecutor() = default;

void* CmdExecutor::requestCmd(const void* in) {
    if (in == nullptr) {
        INFOSYNC_LOGW(INFOSYNC_HERE("requestCmd"), "no command key given");
        return nullptr;
    }
    const std::string key(static_cast<const char*>(in));
    std::string answer;
    if (mIntentAwareImpl != nullptr) {
        answer = mIntentAwareImpl->queryValue(key);
    }
    // Keys and texts never change once they can be seen here, so they are read unlocked.
    const Commands::value_type* asked = mLastAsked.load(std::memory_order_acquire);
    const std::string* text = nullptr;
    if (asked != nullptr && asked->first == key) {
        text = asked->second.last.load(std::memory_order_acquire);
    }
    if (text == nullptr || *text != answer) {
        text = &keep(key, std::move(answer));
    }
    return const_cast<char*>(text->c_str());  // the interface's void* is the caller's const char*
}

// Makes `answer` the last one for `key`, and returns the text that is kept of it.
const std::string& CmdExecutor::keep(const std::string& key, std::string answer) {
    std::lock_guard<std::mutex> lock(mMutex);
    Commands made;  // a new entry: moved in once nothing can fail, so that none lacks an answer
    const auto position = mCmdValues.find(key);
    auto& entry = position != mCmdValues.end() ? *position : *made.try_emplace(key).first;
    const std::string& text = *entry.second.texts.insert(std::move(answer)).first;
    entry.second.last.store(&text, std::memory_order_release);
    mCmdValues.merge(made);
    mLastAsked.store(&entry, std::memory_order_release);
    return text;
}

}  // namespace camInfosync
