// Loads real overlap libraries. Each case is a process of its own under a root directory of its
// own, compared by all that it prints.

#include <cstdio>
#include <cstring>

#include "Doubles.h"

namespace {

class OverlapClient : public doubles::Test {
  protected:
    static void noteOutput(const std::string& root, const std::string& arguments) {
        doubles::note("== " + root + arguments);
        const std::string environment = "TEST_ECHO=1 INFOSYNC_HOST_ROOT=" ROOTS "/" + root + " ";
        FILE* pipe = popen((environment + PROBE + arguments).c_str(), "r");
        ASSERT_NE(pipe, nullptr);
        char text[1024];
        while (fgets(text, sizeof(text), pipe) != nullptr) {
            std::string line = text;
            line.pop_back();
            doubles::replaceFrom(line, ROOTS, strlen(ROOTS), "ROOTS");
            doubles::replaceFrom(line, "= 0x", std::string::npos, "= HANDLE");
            doubles::replaceFrom(line, "(nil)", 5, "0");  // not every C++ library's null
            doubles::note(line);
        }
        EXPECT_EQ(pclose(pipe), 0);
    }
};

TEST_F(OverlapClient, LoadsFromVendorAndOnlyElseFromOdm) {
    // In "both", the copy in /odm would give a null instance.
    for (const char* root : {"both", "broken"}) {
        noteOutput(root, "");
    }
}

TEST_F(OverlapClient, LoadsOnceAndAsksTheInstanceOnce) {
    for (const char* root : {"odm", "null", "neither"}) {
        noteOutput(root, " twice");
    }
}

TEST_F(OverlapClient, EndsWhatTheOverlapLibraryThrows) {
    noteOutput("throws", "");
    for (const char* operation : {"start", "getObject"}) {
        setenv("TEST_THROWS", operation, 1);
        noteOutput("odm", "");
    }
}

}  // namespace
