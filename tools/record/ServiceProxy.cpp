#include "ServiceProxy.h"

#include <cstdint>
#include <string>
#include <utility>

#include "InfoSynchronizer.h"
#include "Order.h"
#include "Recorder.h"

namespace recording {

using camInfosync::InfoSynchronizer;

void ServiceProxy::install() {
    mService = InfoSynchronizer::mIntentAwareImpl;
    if (mService != nullptr) {
        InfoSynchronizer::mIntentAwareImpl = this;
    }
}

void ServiceProxy::remove() {
    if (InfoSynchronizer::mIntentAwareImpl == this) {
        InfoSynchronizer::mIntentAwareImpl = mService;
    }
}

void ServiceProxy::setParam(const std::string& id, const std::string& key,
                            const std::string& value) {
    mService->setParam(id, key, value);
}

void ServiceProxy::reportEvent(const std::string& id, const std::string& event) {
    mService->reportEvent(id, event);
}

void ServiceProxy::finishReport(std::string id, int32_t first, int32_t second) {
    mService->finishReport(std::move(id), first, second);
}

std::string ServiceProxy::queryValue(std::string key) {
    Frame* const frame = Frame::innermost();
    if (frame == nullptr) {
        return mService->queryValue(std::move(key));
    }
    Question question(*frame, key);
    std::string answer = mService->queryValue(std::move(key));
    question.answered(answer);
    return answer;
}

}  // namespace recording
