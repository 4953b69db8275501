// An overlap library whose instance is given by the program that loads it; with NULL_INSTANCE none
// is, and with THROWS it throws from its entry point (1), the instance's start (2) or its
// getObject (3).

#include <cstdio>

#include "IntentAwareSys.h"

#if defined(THROWS)
namespace {

struct OfItsOwn {};  // a type that is gone once the library is closed

class Instance final : public OverlapInstance {
    void reserved1() override {}
    void reserved2() override {}
    void start() override { throwAt(2); }
    void reserved4() override {}
    void* getObject(const char* /*name*/, int /*option*/) override { return throwAt(3); }

  public:
    void* throwAt(int place) { return THROWS == place ? throw OfItsOwn() : this; }
};

}  // namespace

extern "C" void* GetInstance(const unsigned char* /*options*/) {
    static Instance instance;
    return instance.throwAt(1);
}
#elif defined(NULL_INSTANCE)
extern "C" void* GetInstance(const unsigned char* /*options*/) {
    return nullptr;
}
#else
extern "C" void* testOverlapInstance(const unsigned char* options);
extern "C" void* GetInstance(const unsigned char* options) {
    return testOverlapInstance(options);
}
#endif

__attribute__((destructor)) static void close() {
    std::puts("the overlap library is closed");
}
