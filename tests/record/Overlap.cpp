// An overlap library whose service does what a test says.

#include <cstdint>
#include <string>

#include "IntentAwareSys.h"
#include "OverlapClientTmpl.h"
#include "Service.h"
#include "ServiceBase.h"

extern "C" {
extern Service infosyncTestService;
zu_hal_overlap::OverlapEntry GetInstance;
}

namespace {

class TestService final : public ServiceBase {
  public:
    ~TestService() {
        if (infosyncTestService.end != nullptr) {
            infosyncTestService.end();
        }
    }
    void setParam(const std::string&, const std::string&, const std::string&) override {}
    void reportEvent(const std::string&, const std::string&) override {}
    void finishReport(std::string, int32_t, int32_t) override {
        if (infosyncTestService.report) {
            infosyncTestService.report();
        }
    }
    std::string queryValue(std::string) override {
        return infosyncTestService.answer ? infosyncTestService.answer() : "enabled";
    }
};

TestService& theService();

}  // namespace

Service infosyncTestService{{}, {}, nullptr, static_cast<IntentAwareSys*>(&theService())};

namespace {

TestService& theService() {
    static TestService service;
    return service;
}

}  // namespace

OverlapInstance* GetInstance(zu_hal_overlap::OverlapOptions* /*options*/) {
    static ServiceInstance instance(&theService());
    return &instance;
}
