#include "InfoSynchronizer.h"

#include <utility>

#include "IntentAwareSys.h"
#include "Log.h"
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
    std::string key(static_cast<const char*>(in));
    std::string value;
    if (mIntentAwareImpl != nullptr) {
        value = mIntentAwareImpl->queryValue(key);
    }
    auto position = mCmdValues.lower_bound(key);
    if (position == mCmdValues.end() || position->first != key) {
        position = mCmdValues.emplace_hint(position, std::move(key), std::move(value));
    } else if (position->second != value) {  // an equal answer must not write: others may read it
        position->second = std::move(value);
    }
    // Not data(): of a string that others may read at the same time, only const members.
    return const_cast<char*>(position->second.c_str());
}

}  // namespace camInfosync
