#include "JsonText.h"

#include <cinttypes>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

#include "TerminalText.h"

namespace view {

std::string jsonText(std::string_view text) {
    return jsonOfSafe(safe(text));
}

std::string jsonOfSafe(std::string_view text) {
    std::string out = "\"";
    for (const char character : text) {
        switch (character) {
            case '"':
            case '\\':
                out += '\\';
                out += character;
                break;
            case '<':  // so that no text of a log ends the script that it stands in
                out += "\\u003c";
                break;
            case '>':
                out += "\\u003e";
                break;
            case '&':
                out += "\\u0026";
                break;
            default:
                out += character;
        }
    }
    return out + '"';
}

std::string jsonNumber(double value) {
    if (!std::isfinite(value)) {
        return std::isnan(value) ? "\"nan\"" : value > 0 ? "\"inf\"" : "\"-inf\"";
    }
    char text[32];
    std::snprintf(text, sizeof(text), "%.15g", value);
    if (std::strtod(text, nullptr) != value) {
        std::snprintf(text, sizeof(text), "%.17g", value);
    }
    return text;
}

std::string microseconds(int64_t nanoseconds) {
    const char* sign = nanoseconds < 0 ? "-" : "";
    const uint64_t size = nanoseconds < 0 ? 0 - static_cast<uint64_t>(nanoseconds)
                                          : static_cast<uint64_t>(nanoseconds);
    char text[32];
    std::snprintf(text, sizeof(text), "%s%" PRIu64 ".%03" PRIu64, sign, size / 1000, size % 1000);
    return text;
}

}  // namespace view
