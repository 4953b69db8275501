#include "Printable.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>

namespace replay {
namespace {

uint8_t byteAt(std::string_view text, size_t position) {
    return static_cast<uint8_t>(text[position]);
}

// Bytes of the sequence that a first byte announces; 0 if none begins with it.
size_t announcedLength(uint8_t first) {
    if (first < 0x80) {
        return 1;
    }
    if (first < 0xC2 || first > 0xF4) {
        return 0;
    }
    return first < 0xE0 ? 2 : first < 0xF0 ? 3 : 4;
}

// Bytes of the valid UTF-8 sequence that `text` begins with; 0 if there is none.
size_t sequenceLength(std::string_view text) {
    const uint8_t first = byteAt(text, 0);
    const size_t length = announcedLength(first);
    if (length == 0 || length > text.size()) {
        return 0;
    }
    for (size_t i = 1; i < length; ++i) {
        if ((byteAt(text, i) & 0xC0) != 0x80) {
            return 0;
        }
    }
    const uint8_t second = length > 1 ? byteAt(text, 1) : 0;
    const bool overlong = (first == 0xE0 && second < 0xA0) || (first == 0xF0 && second < 0x90);
    const bool surrogate = first == 0xED && second > 0x9F;
    const bool pastLast = first == 0xF4 && second > 0x8F;
    return overlong || surrogate || pastLast ? 0 : length;
}

bool isControl(std::string_view sequence) {
    const uint8_t first = byteAt(sequence, 0);
    return first < 0x20 || first == 0x7F || (first == 0xC2 && byteAt(sequence, 1) < 0xA0);
}

void appendEscaped(std::string& out, uint8_t byte) {
    switch (byte) {
        case '\n':
            out += "\\n";
            return;
        case '\t':
            out += "\\t";
            return;
        case '\\':
            out += "\\\\";
            return;
        default:
            char escape[5];
            std::snprintf(escape, sizeof(escape), "\\x%02x", static_cast<unsigned>(byte));
            out += escape;
    }
}

}  // namespace

std::string printable(std::string_view text, size_t longest) {
    const bool cut = text.size() > longest;
    std::string out;
    out.reserve(cut ? longest : text.size());
    for (size_t i = 0; i < text.size();) {
        const size_t length = sequenceLength(text.substr(i));
        const std::string_view sequence = text.substr(i, length != 0 ? length : 1);
        if (cut && i + sequence.size() > longest) {
            return out + "...";
        }
        if (length == 0 || isControl(sequence) || sequence == "\\") {
            for (size_t b = 0; b < sequence.size(); ++b) {
                appendEscaped(out, byteAt(sequence, b));
            }
        } else {
            out += sequence;
        }
        i += sequence.size();
    }
    return out;
}

}  // namespace replay
