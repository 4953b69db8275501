#include "TerminalText.h"

#include <locale.h>  // newlocale
#include <wchar.h>   // wcwidth

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Printable.h"
#include "TerminalStyle.h"

namespace view {
namespace {

// A character of a safe text, which is UTF-8.
struct Character {
    char32_t code;
    size_t bytes;
};

Character characterAt(std::string_view text, size_t position) {
    const auto byte = [&](size_t offset) {
        return position + offset < text.size() ? static_cast<uint8_t>(text[position + offset]) : 0U;
    };
    const auto rest = [&](size_t offset) { return byte(offset) & 0x3FU; };
    const uint32_t first = byte(0);
    if (first < 0x80) {
        return {first, 1};
    }
    if (first < 0xE0) {
        return {(first & 0x1FU) << 6 | rest(1), 2};
    }
    if (first < 0xF0) {
        return {(first & 0xFU) << 12 | rest(1) << 6 | rest(2), 3};
    }
    return {(first & 7U) << 18 | rest(1) << 12 | rest(2) << 6 | rest(3), 4};
}

// Marks that turn the direction of writing, blanks of no width, and ends of lines.
bool misleads(char32_t code) {
    return code == 0xAD || code == 0x61C || code == 0xFEFF || code == 0x200B || code == 0x200E ||
           code == 0x200F || (code >= 0x2028 && code <= 0x202E) ||
           (code >= 0x2060 && code <= 0x206F) || (code >= 0xE0000 && code <= 0xE007F);
}

// Widths are asked of a locale that knows all characters, whatever the user's is.
size_t columnsOfCharacter(char32_t code) {
    static const locale_t kAllCharacters = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
    if (code < 0x80 || kAllCharacters == nullptr) {
        return 1;
    }
    const locale_t before = uselocale(kAllCharacters);
    const int columns = wcwidth(static_cast<wchar_t>(code));
    uselocale(before);
    return columns < 0 ? 1 : static_cast<size_t>(columns);
}

// The bytes that the first characters take which fit into that many columns.
size_t bytesOfStart(std::string_view text, size_t width) {
    size_t columns = 0;
    size_t position = 0;
    while (position < text.size()) {
        const Character character = characterAt(text, position);
        columns += columnsOfCharacter(character.code);
        if (columns > width) {
            break;
        }
        position += character.bytes;
    }
    return position;
}

// Where the rest begins that fits into that many columns.
size_t beginOfEnd(std::string_view text, size_t width) {
    const size_t all = columnsOf(text);
    size_t position = bytesOfStart(text, all - std::min(all, width));
    if (columnsOf(text.substr(position)) > width) {  // it would begin within a wide character
        position += characterAt(text, position).bytes;
    }
    return position;
}

std::string dots(size_t width, const TerminalStyle& style) {
    return style.utf8 ? "\u2026" : std::string(std::min<size_t>(width, 2), '.');
}

// The number without zeros at its end that say nothing.
std::string withoutZeros(std::string number) {
    if (number.find('.') != std::string::npos) {
        number.erase(number.find_last_not_of('0') + 1);
        number.erase(number.find_last_not_of('.') + 1);
    }
    return number == "-0" ? "0" : number;
}

}  // namespace

std::string safe(std::string_view text) {
    const std::string printable = replay::printable(text);
    std::string out;
    out.reserve(printable.size());
    for (size_t position = 0; position < printable.size();) {
        const Character character = characterAt(printable, position);
        if (misleads(character.code)) {
            char escape[16];
            std::snprintf(escape, sizeof(escape), "\\u{%x}", static_cast<unsigned>(character.code));
            out += escape;
        } else {
            out.append(printable, position, character.bytes);
        }
        position += character.bytes;
    }
    return out;
}

std::string safeName(std::string_view name) {
    return name.empty() ? "(no name)" : safe(name);
}

size_t columnsOf(std::string_view text) {
    size_t columns = 0;
    for (size_t position = 0; position < text.size();) {
        const Character character = characterAt(text, position);
        columns += columnsOfCharacter(character.code);
        position += character.bytes;
    }
    return columns;
}

std::string withoutMiddle(const std::string& text, size_t width, const TerminalStyle& style) {
    if (width == 0 || columnsOf(text) <= width) {
        return width == 0 ? "" : text;
    }
    const std::string gap = dots(width, style);
    const size_t kept = width - columnsOf(gap);
    const size_t start = kept / 3;
    return text.substr(0, bytesOfStart(text, start)) + gap +
           text.substr(beginOfEnd(text, kept - start));
}

std::string withoutEnd(const std::string& text, size_t width, const TerminalStyle& style) {
    if (width == 0 || columnsOf(text) <= width) {
        return width == 0 ? "" : text;
    }
    const std::string gap = dots(width, style);
    return text.substr(0, bytesOfStart(text, width - columnsOf(gap))) + gap;
}

std::string inColour(const std::string& text, Colour colour, const TerminalStyle& style) {
    if (!style.colour || colour == Colour::kNone || text.empty()) {
        return text;
    }
    const auto code = std::to_string(static_cast<int>(colour));
    return "\033[" + code + 'm' + text + "\033[0m";
}

std::string milliseconds(double ms) {
    const double size = std::abs(ms);
    if (size >= 1e15) {
        return number(ms);
    }
    char digits[40];
    const int decimals = size < 9.995 ? 2 : size < 99.95 ? 1 : 0;
    std::snprintf(digits, sizeof(digits), "%.*f", decimals, ms);
    return withoutZeros(digits);
}

std::string milliseconds(std::optional<double> ms) {
    return ms ? milliseconds(*ms) : kNotKnown;
}

std::string number(double value) {
    char digits[40];
    if (std::abs(value) < 1e12) {
        std::snprintf(digits, sizeof(digits), "%.3f", value);
        return withoutZeros(digits);
    }
    std::snprintf(digits, sizeof(digits), "%.15g", value);
    return digits;
}

std::string number(std::optional<double> value) {
    return value ? number(*value) : kNotKnown;
}

std::string counted(uint64_t count, const char* noun) {
    return std::to_string(count) + ' ' + noun + (count == 1 ? "" : "s");
}

std::string joined(const std::vector<std::string>& texts) {
    std::string all;
    for (const std::string& text : texts) {
        all += (all.empty() ? "" : ", ") + text;
    }
    return texts.empty() ? "none" : all;
}

}  // namespace view
