#include "SafeText.h"

#include <charconv>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <system_error>

namespace rows {
namespace {

// The number that all of the hex digits mean; above the last character if they mean none.
uint32_t fromHex(std::string_view digits) {
    constexpr int kBase = 16;
    uint32_t value = 0;
    const char* const begin = digits.data();
    const char* const end = begin + digits.size();
    const auto [last, error] = std::from_chars(begin, end, value, kBase);
    return error == std::errc() && last == end ? value : UINT32_MAX;
}

void appendUtf8(std::string& out, uint32_t code) {
    const auto append = [&](uint32_t byte) { out += static_cast<char>(byte); };
    const auto appendContinuation = [&](unsigned shift) {
        append(0x80U | ((code >> shift) & 0x3FU));
    };
    if (code < 0x80) {
        append(code);
    } else if (code < 0x800) {
        append(0xC0U | (code >> 6U));
        appendContinuation(0);
    } else if (code < 0x10000) {
        append(0xE0U | (code >> 12U));
        appendContinuation(6);
        appendContinuation(0);
    } else {
        append(0xF0U | (code >> 18U));
        appendContinuation(12);
        appendContinuation(6);
        appendContinuation(0);
    }
}

// Appends what the escape means that `text` begins with. Returns its length; 0 if it is none.
size_t appendMeaning(std::string& out, std::string_view text) {
    constexpr uint32_t kLastCharacter = 0x10FFFF;
    const char kind = text.size() > 1 ? text[1] : '\0';
    if (kind == 'n' || kind == 't' || kind == '\\') {
        out += kind == 'n' ? '\n' : kind == 't' ? '\t' : '\\';
        return 2;
    }
    if (kind == 'x' && text.size() >= 4) {
        const uint32_t byte = fromHex(text.substr(2, 2));
        if (byte <= 0xFF) {
            out += static_cast<char>(byte);
            return 4;
        }
    }
    const size_t brace = text.find('}');
    if (kind == 'u' && text.size() > 2 && text[2] == '{' && brace != std::string_view::npos) {
        const uint32_t code = fromHex(text.substr(3, brace - 3));
        if (code <= kLastCharacter) {
            appendUtf8(out, code);
            return brace + 1;
        }
    }
    return 0;
}

}  // namespace

std::string withoutEscapes(std::string_view text) {
    std::string out;
    out.reserve(text.size());
    while (!text.empty()) {
        const size_t escape = text.front() == '\\' ? appendMeaning(out, text) : 0;
        if (escape == 0) {
            out += text.front();
        }
        text.remove_prefix(escape == 0 ? 1 : escape);
    }
    return out;
}

}  // namespace rows
