// An overlap library that says what log level it finds, and offers nothing.

#include <cstdio>
#include <cstdlib>

extern "C" void* GetInstance(void* /*options*/) {
    const char* level = std::getenv("INFOSYNC_LOG_LEVEL");
    std::fprintf(stderr, "the log level is %s\n", level != nullptr ? level : "not set");
    return nullptr;
}
