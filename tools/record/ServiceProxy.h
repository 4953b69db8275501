// Stands between the library and the service, to see what the service answers.

#pragma once

#include <cstdint>
#include <string>

#include "IntentAwareSys.h"

namespace recording {

// Passes everything on. The library uses no slot but those that are overridden with arguments;
// of the others nothing is known, and they are passed on as they are declared.
class ServiceProxy final : public IntentAwareSys {
  public:
    // Takes the service's place in the library, if there is a service.
    void install();
    // Gives the place back.
    void remove();

    void setParam(const std::string& id, const std::string& key, const std::string& value) override;
    void reportEvent(const std::string& id, const std::string& event) override;
    void finishReport(std::string id, int32_t first, int32_t second) override;
    std::string queryValue(std::string key) override;

  private:
    void reserved01() override { mService->reserved01(); }
    void reserved02() override { mService->reserved02(); }
    void reserved03() override { mService->reserved03(); }
    void reserved04() override { mService->reserved04(); }
    void reserved05() override { mService->reserved05(); }
    void reserved06() override { mService->reserved06(); }
    void reserved07() override { mService->reserved07(); }
    void reserved08() override { mService->reserved08(); }
    void reserved09() override { mService->reserved09(); }
    void reserved10() override { mService->reserved10(); }
    void reserved11() override { mService->reserved11(); }
    void reserved12() override { mService->reserved12(); }
    void reserved13() override { mService->reserved13(); }
    void reserved14() override { mService->reserved14(); }
    void reserved15() override { mService->reserved15(); }
    void reserved16() override { mService->reserved16(); }
    void reserved17() override { mService->reserved17(); }
    void reserved18() override { mService->reserved18(); }
    void reserved19() override { mService->reserved19(); }
    void reserved20() override { mService->reserved20(); }
    void reserved22() override { mService->reserved22(); }

    IntentAwareSys* mService = nullptr;
};

}  // namespace recording
