// Makes the calls of a file a given number of times, for tools that count instructions. What
// the program does besides is the same for each number.
//
// usage: infosync-instructions FILE COUNT [infosync|by_hand]

#include <zudebug/Log.h>

#include <cstdlib>
#include <cstring>
#include <iostream>

#include "Bench.h"
#include "InfoSynchronizer.h"

CountingService& service() {
    static CountingService service;
    return service;
}

namespace {

template <typename Implementation>
void run(const std::vector<Call>& calls, long count) {
    const OthersInFlight<Implementation> others(imageOf(calls.at(0)), kOthersInFlight);
    for (long i = 0; i < count; ++i) {
        makeCalls(Implementation::manager(), calls);
    }
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 3) {
        std::cerr << "usage: " << argv[0] << " FILE COUNT [infosync|by_hand]\n";
        return 2;
    }
    zudebug::gZuCamLogGroup = 0;  // both log gates are shut
    camInfosync::InfoSynchronizer::mIntentAwareImpl = &service();
    HandWritten::service = &service();
    const std::vector<Call> calls = readCalls(argv[1]);
    const long count = std::atol(argv[2]);
    if (argc > 3 && std::strcmp(argv[3], "by_hand") == 0) {
        run<ByHand>(calls, count);
    } else {
        run<Infosync>(calls, count);
    }
    std::cout << service().calls << " calls, " << service().bytes << " bytes\n";
}
