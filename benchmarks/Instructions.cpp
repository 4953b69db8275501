// Repeats one thing a given number of times, for tools that count instructions. What the program
// does besides is the same for each number. Prints how many calls the service received.
//
// usage: infosync-instructions short_names|long_names|command COUNT

#include <cstdlib>
#include <iostream>
#include <stdexcept>

#include "Workload.h"

namespace {

void repeat(const std::string& what, uint64_t count) {
    const Lifecycle& lifecycle = what == "long_names" ? longNames() : shortNames();
    const OthersInFlight others(lifecycle, kOthersInFlight);
    for (uint64_t i = 0; i < count; ++i) {
        if (what != "command") {
            makeCalls(lifecycle.calls);
        } else if (!askWhetherEnabled()) {
            throw std::runtime_error("the answer is wrong");
        }
    }
}

}  // namespace

int main(int argc, char** argv) {
    const std::string what = argc == 3 ? argv[1] : "";
    if (what != "short_names" && what != "long_names" && what != "command") {
        std::cerr << "usage: infosync-instructions short_names|long_names|command COUNT\n";
        return 2;
    }
    prepareLibrary();
    repeat(what, std::strtoull(argv[2], nullptr, 10));
    std::cout << service().calls << '\n';
}
