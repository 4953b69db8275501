// The interface as a program sees it that loads the library with local scope, and uses it
// through plug-ins.

#include <dlfcn.h>

#include <string>

#include <gtest/gtest.h>

#include "Plugin.h"
#include "RawOverlap.h"

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
    auto* takeReceived = find<TakeReceived>(overlap, "takeReceived");

    for (const char* path : {PLUGIN_DEFAULT, PLUGIN_HIDDEN}) {
        void* plugin = dlopen(path, RTLD_NOW | RTLD_LOCAL);
        ASSERT_NE(plugin, nullptr) << dlerror();
        EXPECT_EQ(find<ManagerOfPlugin>(plugin, "managerOfPlugin")(), own) << path;
        takeReceived();
        find<ReportThroughPlugin>(plugin, "reportThroughPlugin")("A");
        EXPECT_NE(std::string(takeReceived()).find("24 A 1022 10000"), std::string::npos) << path;
    }
}

}  // namespace
