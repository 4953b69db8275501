// A service that takes all calls in one place.

#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "ServiceBase.h"

namespace doubles {

// A call to the service: its name and its arguments.
using Call = std::vector<std::string>;

class CallService : public ServiceBase {
  public:
    void setParam(const std::string& id, const std::string& key, const std::string& text) final {
        receive({"setParam", id, key, text});
    }
    void reportEvent(const std::string& id, const std::string& event) final {
        receive({"reportEvent", id, event});
    }
    void finishReport(std::string id, int32_t first, int32_t second) final {
        receive({"finishReport", id, std::to_string(first), std::to_string(second)});
    }
    std::string queryValue(std::string key) final {
        receive({"queryValue", key});
        return answerTo(key);
    }

  protected:
    ~CallService() = default;

  private:
    virtual void receive(const Call& call) = 0;
    virtual std::string answerTo(const std::string& key) = 0;
};

}  // namespace doubles
