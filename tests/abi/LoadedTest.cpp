// The interface as a program sees it that loads the library with local scope, and uses it
// through further shared objects.

#include <dlfcn.h>

#include <string>

#include <gtest/gtest.h>

namespace {

template <typename Function>
Function* find(void* library, const char* name) {
    auto* function = reinterpret_cast<Function*>(dlsym(library, name));
    EXPECT_NE(function, nullptr) << name;
    return function;
}

TEST(BinaryInterface, OneManagerWithLocalScope) {
    void* library = dlopen(LIBRARY, RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(library, nullptr) << dlerror();
    void* own =
            find<void*()>(library, "_ZN11camInfosync23InfoSynchronizerManager11getInstanceEv")();
    void* overlap = dlopen(OVERLAP, RTLD_NOW | RTLD_NOLOAD);
    ASSERT_NE(overlap, nullptr) << dlerror();
    auto* takeReceived = find<const char*()>(overlap, "takeReceived");

    for (const char* path : {BETWEEN_DEFAULT, BETWEEN_HIDDEN}) {
        void* between = dlopen(path, RTLD_NOW | RTLD_LOCAL);
        ASSERT_NE(between, nullptr) << dlerror();
        EXPECT_EQ(find<void*()>(between, "managerOfBetween")(), own) << path;
        takeReceived();
        find<void(const char*)>(between, "reportThroughBetween")("A");
        EXPECT_NE(std::string(takeReceived()).find("24 A 1022 10000"), std::string::npos) << path;
    }
}

}  // namespace
