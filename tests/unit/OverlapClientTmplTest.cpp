// Loads real overlap libraries. Each case is a process of its own, compared by what it prints of
// the loading and of the end.

#include "FreshProcess.h"

namespace {

class OverlapClient : public doubles::Test {
  protected:
    static void noteOutput(const std::string& root, const std::string& environment,
                           const std::string& things) {
        doubles::note("== " + root);
        for (const std::string& line : runFresh(root, environment, things)) {
            if (line.rfind("property ", 0) != 0) {  // what InfoSynchronizerManager reads
                doubles::note(line);
            }
        }
    }
};

TEST_F(OverlapClient, LoadsFromVendorAndOnlyElseFromOdm) {
    // In "both", the copy in /odm would give a null instance.
    for (const char* root : {"both", "broken"}) {
        noteOutput(root, "", "");
    }
}

TEST_F(OverlapClient, LoadsOnceAndAsksTheInstanceOnce) {
    for (const char* root : {"odm", "null", "neither"}) {
        noteOutput(root, "", "client");
    }
}

TEST_F(OverlapClient, TakesTheLoadersErrorForAFormat) {
    noteOutput("100%%", "", "");
}

TEST_F(OverlapClient, EndsWhatTheOverlapLibraryThrows) {
    noteOutput("throws", "", "");
    for (const char* operation : {"start", "getObject"}) {
        noteOutput("odm", std::string("TEST_THROWS=") + operation, "");
    }
}

}  // namespace
