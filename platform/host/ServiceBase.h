// What every service at a desk has in common: the slots that this library does not use.

#pragma once

#include <string>

#include "IntentAwareSys.h"

// Derived classes give the four slots that are used.
class ServiceBase : public IntentAwareSys {
  protected:
    ~ServiceBase() = default;

  private:
    void reserved01() final {}
    void reserved02() final {}
    void reserved03() final {}
    void reserved04() final {}
    void reserved05() final {}
    void reserved06() final {}
    void reserved07() final {}
    void reserved08() final {}
    void reserved09() final {}
    void reserved10() final {}
    void reserved11() final {}
    void reserved12() final {}
    void reserved13() final {}
    void reserved14() final {}
    void reserved15() final {}
    void reserved16() final {}
    void reserved17() final {}
    void reserved18() final {}
    void reserved19() final {}
    void reserved20() final {}
    void reserved22() final {}
};

// An overlap library's instance that offers one object, under the name "IntentAwareSys".
class ServiceInstance final : public OverlapInstance {
  public:
    explicit ServiceInstance(IntentAwareSys* service) : mService(service) {}
    void start() override {}
    void* getObject(const char* name, int /*option*/) override {
        return std::string(name) == "IntentAwareSys" ? mService : nullptr;
    }

  private:
    void reserved1() final {}
    void reserved2() final {}
    void reserved4() final {}

    IntentAwareSys* const mService;
};
