// A stand-in for the overlap library: its service answers every command with the environment's
// INFOSYNC_HOST_ANSWER ("enabled" if unset) and keeps the calls that it receives.

#include "OverlapService.h"

#include <cstdlib>
#include <cstring>
#include <mutex>

#include "IntentAwareSys.h"

namespace {

class RecordingService final : public IntentAwareSys {
  public:
    void setParam(const std::string& id, const std::string& key,
                  const std::string& value) override {
        keep({ServiceCall::Kind::kSetParam, id, key, value});
    }
    void reportEvent(const std::string& id, const std::string& event) override {
        keep({ServiceCall::Kind::kReportEvent, id, {}, event});
    }
    void finishReport(std::string id, int32_t first, int32_t second) override {
        keep({ServiceCall::Kind::kFinishReport, std::move(id), {}, {}, first, second});
    }
    std::string queryValue(std::string /*key*/) override {
        const char* answer = std::getenv("INFOSYNC_HOST_ANSWER");
        return answer != nullptr ? answer : "enabled";
    }

    void take(std::vector<ServiceCall>* calls) {
        std::lock_guard<std::mutex> lock(mMutex);
        calls->insert(calls->end(), std::make_move_iterator(mCalls.begin()),
                      std::make_move_iterator(mCalls.end()));
        mCalls.clear();
    }

  private:
    void keep(ServiceCall call) {
        std::lock_guard<std::mutex> lock(mMutex);
        mCalls.push_back(std::move(call));
    }

    void reserved01() override {}
    void reserved02() override {}
    void reserved03() override {}
    void reserved04() override {}
    void reserved05() override {}
    void reserved06() override {}
    void reserved07() override {}
    void reserved08() override {}
    void reserved09() override {}
    void reserved10() override {}
    void reserved11() override {}
    void reserved12() override {}
    void reserved13() override {}
    void reserved14() override {}
    void reserved15() override {}
    void reserved16() override {}
    void reserved17() override {}
    void reserved18() override {}
    void reserved19() override {}
    void reserved20() override {}
    void reserved22() override {}

    std::mutex mMutex;
    std::vector<ServiceCall> mCalls;  // guarded by mMutex
};

RecordingService& service() {
    // Never destroyed: calls may arrive until the very end of the process.
    static auto& service = *new RecordingService;
    return service;
}

class Instance final : public OverlapInstance {
  public:
    void start() override {}
    void* getObject(const char* name, int /*option*/) override {
        IntentAwareSys* object = std::strcmp(name, "IntentAwareSys") == 0 ? &service() : nullptr;
        return object;
    }

  private:
    void reserved1() override {}
    void reserved2() override {}
    void reserved4() override {}
};

}  // namespace

extern "C" {

void* GetInstance(void* /*options*/) {
    static Instance instance;
    return static_cast<OverlapInstance*>(&instance);
}

void infosyncTakeServiceCalls(std::vector<ServiceCall>* calls) {
    service().take(calls);
}

}  // extern "C"
