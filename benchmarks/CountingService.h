// An intent-aware object that counts what it is sent and keeps none of it.

#pragma once

#include <atomic>
#include <cstdint>
#include <string>

#include "ServiceBase.h"

class CountingService final : public ServiceBase {
  public:
    void setParam(const std::string& id, const std::string& key,
                  const std::string& value) override {
        count(id.size() + key.size() + value.size());
    }
    void reportEvent(const std::string& id, const std::string& event) override {
        count(id.size() + event.size());
    }
    void finishReport(std::string id, int32_t /*first*/, int32_t /*second*/) override {
        count(id.size());
    }
    std::string queryValue(std::string /*key*/) override { return "enabled"; }

    std::atomic<uint64_t> calls{0};
    std::atomic<uint64_t> bytes{0};

  private:
    void count(uint64_t size) {
        calls.fetch_add(1, std::memory_order_relaxed);
        bytes.fetch_add(size, std::memory_order_relaxed);
    }
};
