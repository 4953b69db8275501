#include "Capture.h"

#include <algorithm>
#include <optional>

#include "Finding.h"

namespace view {

bool Stage::isInstant() const {
    const bool isConstant = (number == 7 || number == 11) && ms == 0;
    return isKnown && number != 0 && number != 6 && !isConstant && ms >= 0;
}

bool Capture::hasFailed() const {
    return std::any_of(findings.begin(), findings.end(),
                       [](const Finding& finding) { return meansFailure(finding.kind); });
}

std::optional<double> Capture::duration() const {
    constexpr long double kNanosecondsPerMs = 1e6L;
    if (!registered || !flushed) {
        return std::nullopt;
    }
    // In numbers that hold any two times: the difference of these may overflow.
    const long double ns =
            static_cast<long double>(*flushed) - static_cast<long double>(*registered);
    return static_cast<double>(ns / kNanosecondsPerMs);
}

const Node* Capture::slowestNode() const {
    const Node* slowest = nullptr;
    double most = 0;
    for (const Node& node : nodes) {
        const std::optional<double> ms = node.duration();
        if (ms && (slowest == nullptr || *ms > most)) {
            slowest = &node;
            most = *ms;
        }
    }
    return slowest;
}

const Value* Capture::find(const char* value) const {
    const auto position = std::find_if(values.begin(), values.end(),
                                       [&](const Value& each) { return each.name == value; });
    return position != values.end() ? &*position : nullptr;
}

}  // namespace view
