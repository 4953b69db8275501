#include <zudebug/Log.h>

#include "Bench.h"
#include "InfoSynchronizer.h"

CountingService& service() {
    static CountingService service;
    return service;
}

int main(int argc, char** argv) {
    zudebug::gZuCamLogGroup = 0;  // both log gates are shut
    camInfosync::InfoSynchronizer::mIntentAwareImpl = &service();
    HandWritten::service = &service();
    registerLifecycles();
    registerOperations();
    registerPlatform();
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 1;
    }
    benchmark::RunSpecifiedBenchmarks();
}
