#include "Tolerance.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <iterator>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "Printable.h"

namespace diff {
namespace {

[[noreturn]] void refuse(const std::string& text) {
    throw std::runtime_error("--tolerance: \"" + replay::printable(text, 60) +
                             "\" is none; it is a number with its unit, as 10%, 5ms, 250us or 1s");
}

struct Unit {
    std::string_view name;
    double us;  // 0: a part of the duration
};

constexpr Unit kUnits[] = {{"%", 0}, {"us", 1}, {"ms", 1e3}, {"s", 1e6}};

}  // namespace

bool Tolerance::allows(int64_t a, int64_t b) const {
    constexpr double kParts = 100;
    const double from = static_cast<double>(a);
    const double allowed = std::max(us, std::abs(from) * percent / kParts);
    return std::abs(static_cast<double>(b) - from) <= allowed;
}

Tolerance toleranceOf(const std::vector<std::string>& texts) {
    Tolerance tolerance;
    for (const std::string& text : texts) {
        // Not by strtod alone, which takes signs, blanks and "inf".
        const std::string digits = text.substr(0, text.find_first_not_of("0123456789."));
        char* end = nullptr;
        const double number = std::strtod(digits.c_str(), &end);
        const std::string_view unitName = std::string_view(text).substr(digits.size());
        const auto* unit = std::find_if(std::begin(kUnits), std::end(kUnits),
                                        [&](const Unit& each) { return each.name == unitName; });
        const bool isNumber = !digits.empty() && *end == '\0' && std::isfinite(number);
        if (!isNumber || unit == std::end(kUnits)) {
            refuse(text);
        }
        (unit->us == 0 ? tolerance.percent : tolerance.us) =
                unit->us == 0 ? number : number * unit->us;
    }
    return tolerance;
}

}  // namespace diff
