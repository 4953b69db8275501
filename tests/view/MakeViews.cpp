// Writes views of made captures: MakeViews ordinary|real|hostile|complete NUMBER TRACE PAGE; ""
// leaves one out. Those of "real" are ordinary ones, with times of the real clock.

#include <cstdint>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <string>

#include "Capture.h"
#include "MadeCaptures.h"
#include "View.h"
#include "ViewOptions.h"
#include "Views.h"

namespace {

view::Capture make(const std::string& kind, uint64_t number) {
    return kind == "hostile"    ? view::hostileCapture(number)
           : kind == "complete" ? number == 1 ? view::completeCapture() : view::nodesOnlyCapture()
                                : view::ordinaryCapture(number);
}

}  // namespace

int main(int argc, char** argv) try {
    if (argc != 5) {
        std::cerr
                << "usage: infosync-make-views ordinary|real|hostile|complete NUMBER TRACE PAGE\n";
        return 2;
    }
    const bool isHostile = std::string(argv[1]) == "hostile";
    const uint64_t number = std::strtoull(argv[2], nullptr, 10);
    view::ViewOptions options;
    options.trace = argv[3];
    options.html = argv[4];
    view::Session session = view::madeSession(isHostile);
    session.clock = std::string(argv[1]) == "real" ? view::Clock::kReal : session.clock;
    view::Views views(options, nullptr);
    // The second comes first: the order is that of their ends.
    for (uint64_t i = 1; i <= number; ++i) {
        const uint64_t next = i % 2 == 0 ? i - 1 : i < number ? i + 1 : i;
        views.add(make(argv[1], next), session);
    }
    views.finish(session);
    return 0;
} catch (const std::exception& error) {
    std::cerr << error.what() << '\n';
    return 2;
}
