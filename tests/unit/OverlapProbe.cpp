// Loads the overlap library and ends, for a test that compares what this prints. With an
// argument, also uses a client of its own and asks it twice.

#include "Doubles.h"
#include "InfoSynchronizer.h"
#include "OverlapClientTmpl.h"

int main(int argc, char** /*argv*/) {
    doubles::note("service", camInfosync::InfoSynchronizer::mIntentAwareImpl != nullptr);
    if (argc > 1) {
        using Client = zu_hal_overlap::OverlapClientTmpl;
        doubles::note("Load", Client::GetInstance().Load());
        const auto* first = Client::GetIntentAwareSys();
        doubles::note("same", first == Client::GetIntentAwareSys());
    }
    return 0;
}
