// An overlap library whose instance is given by the program that loads it, or that has none, or
// that needs a function which nobody has, or that throws something of its own.

#include <cstdio>

#if defined(NULL_INSTANCE)
#define INSTANCE(options) nullptr
#elif defined(UNRESOLVED)
extern "C" void* definedNowhere();
#define INSTANCE(options) definedNowhere()
#elif defined(THROWS)
struct OfItsOwn {};  // a type that is gone once the library is closed
#define INSTANCE(options) (throw OfItsOwn(), nullptr)
#else
extern "C" void* testOverlapInstance(const unsigned char* options);
#define INSTANCE(options) testOverlapInstance(options)
#endif

extern "C" void* GetInstance([[maybe_unused]] const unsigned char* options) {
    return INSTANCE(options);
}

namespace {

__attribute__((destructor)) void close() {
    std::puts("the overlap library is closed");
}

}  // namespace
