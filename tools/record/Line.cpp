#include "Line.h"

#include <time.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

#include "RequestRecord.h"

namespace recording {
namespace {

constexpr char kHexDigits[] = "0123456789abcdef";

bool isContinuation(unsigned char byte) {
    return (byte & 0xC0U) == 0x80U;
}

// The length of the sequence that `text` begins with, or 0 if it is none.
size_t sequenceLength(std::string_view text) {
    const auto byte = [text](size_t i) { return static_cast<unsigned char>(text[i]); };
    const unsigned char first = byte(0);
    if (first < 0x80) {
        return 1;
    }
    const size_t length = first < 0xC2 ? 0 : first < 0xE0 ? 2 : first < 0xF0 ? 3 : 4;
    if (length == 0 || first > 0xF4 || text.size() < length) {
        return 0;
    }
    for (size_t i = 1; i < length; ++i) {
        if (!isContinuation(byte(i))) {
            return 0;
        }
    }
    // Longer than need be, a surrogate, or past the last character.
    const unsigned char second = byte(1);
    const bool isWrong = (first == 0xE0 && second < 0xA0) || (first == 0xED && second > 0x9F) ||
                         (first == 0xF0 && second < 0x90) || (first == 0xF4 && second > 0x8F);
    return isWrong ? 0 : length;
}

constexpr uint64_t inEachByte(unsigned char byte) {
    return ~uint64_t{0} / 0xFF * byte;
}

// Whether each of eight characters is written as it stands. `word - n` borrows from the highest
// bit of the first byte that is less than n.
bool isPlain(uint64_t word) {
    const uint64_t quotes = word ^ inEachByte('"');
    const uint64_t backslashes = word ^ inEachByte('\\');
    const uint64_t found = word | ((word - inEachByte(0x20)) & ~word) |
                           ((quotes - inEachByte(1)) & ~quotes) |
                           ((backslashes - inEachByte(1)) & ~backslashes);
    return (found & inEachByte(0x80)) == 0;
}

// Whether the text is written as it stands.
bool isPlain(std::string_view text) {
    bool plain = true;
    uint64_t word = 0;
    for (; text.size() >= sizeof(word) && plain; text.remove_prefix(sizeof(word))) {
        std::memcpy(&word, text.data(), sizeof(word));
        plain = isPlain(word);
    }
    word = inEachByte('x');
    std::memcpy(&word, text.data(), std::min(text.size(), sizeof(word)));
    return plain && isPlain(word);
}

}  // namespace

bool Line::isUtf8(std::string_view text) {
    while (!text.empty()) {
        const size_t length = sequenceLength(text);
        if (length == 0) {
            return false;
        }
        text.remove_prefix(length);
    }
    return true;
}

// The text is UTF-8.
void Line::putEscaped(std::string_view text) {
    constexpr size_t kLongestEscape = 6;
    char* out = room(text.size() * kLongestEscape);
    for (const char character : text) {
        const auto byte = static_cast<unsigned char>(character);
        if (byte < 0x20) {
            for (const char part :
                 {'\\', 'u', '0', '0', kHexDigits[byte >> 4U], kHexDigits[byte & 0xFU]}) {
                *out++ = part;
            }
            continue;
        }
        if (character == '"' || character == '\\') {
            *out++ = '\\';
        }
        *out++ = character;
    }
    mSize = static_cast<size_t>(out - mText.data());
}

void Line::putHex(std::string_view text) {
    add("{\"hex\":\"");
    for (const char character : text) {
        const auto byte = static_cast<unsigned char>(character);
        add(kHexDigits[byte >> 4U]);
        add(kHexDigits[byte & 0xFU]);
    }
    add("\"}");
}

void Line::put(std::string_view text) {
    if (isPlain(text)) {
        char* out = room(text.size() + 2);
        *out++ = '"';
        out = std::copy(text.begin(), text.end(), out);
        *out++ = '"';
        mSize = static_cast<size_t>(out - mText.data());
    } else if (isUtf8(text)) {
        add('"');
        putEscaped(text);
        add('"');
    } else {
        putHex(text);
    }
}

void Line::put(const char* text) {
    if (text == nullptr) {
        put(nullptr);
    } else {
        put(std::string_view(text));
    }
}

namespace {

// A number's text: `Bits` is the integer of its size, `digits` the number of its hex digits.
template <typename Bits, typename Number>
std::string_view numberText(Number value, char (&text)[40]) {
    if (std::isfinite(value)) {
        const auto end = std::to_chars(text, text + sizeof(text), value).ptr;
        // A whole number's text must not become that of an integer, which has no negative zero.
        const std::string_view written(text, static_cast<size_t>(end - text));
        return written == "-0" ? "-0.0" : written;
    }
    if (std::isinf(value)) {
        return value < 0 ? "\"-inf\"" : "\"inf\"";
    }
    Bits bits = 0;
    std::memcpy(&bits, &value, sizeof(bits));
    constexpr char kPrefix[] = "\"nan:0x";
    char* out = text + sizeof(kPrefix) - 1;
    std::memcpy(text, kPrefix, sizeof(kPrefix) - 1);
    for (unsigned shift = sizeof(Bits) * 8; shift > 0;) {
        shift -= 4;
        *out++ = kHexDigits[(bits >> shift) & 0xFU];
    }
    *out++ = '"';
    return {text, static_cast<size_t>(out - text)};
}

}  // namespace

void Line::put(float value) {
    char text[40];
    add(numberText<uint32_t>(value, text));
}

void Line::put(double value) {
    char text[40];
    add(numberText<uint64_t>(value, text));
}

void Line::put(const timespec& time) {
    add('{');
    field("sec", time.tv_sec);
    field("nsec", time.tv_nsec);
    add('}');
}

void Line::put(const camInfosync::FrameInfo& frame) {
    add('{');
    field("frameNumber", frame.frameNumber);
    field("timestamp", frame.timestamp);
    field("camIds", frame.camIds);
    field("frameExtra", frame.frameExtra);
    field("imageName", frame.imageName);
    add('}');
}

void Line::put(const camInfosync::SnapshotInfo::RequestInfo& info) {
    add('{');
    field("reqValueA", info.reqValueA);
    field("reqValueB", info.reqValueB);
    field("anchorFrame", info.anchorFrame);
    field("reqFlag", info.reqFlag);
    field("reqValue64", info.reqValue64);
    field("reqIdsA", info.reqIdsA);
    field("expectedResultIds", info.expectedResultIds);
    add('}');
}

void Line::put(const camInfosync::SnapshotInfo::ZuAlgoInfo& info) {
    add('{');
    field("algoList", info.algoList);
    field("algoTimeA", info.algoTimeA);
    field("algoTimeB", info.algoTimeB);
    field("algoTimeC", info.algoTimeC);
    field("algoState", info.algoState);
    add('}');
}

void Line::put(const camInfosync::SnapshotInfo& info) {
    add('{');
    field("requestType", info.requestType);
    field("camMode", info.camMode);
    field("faceDetect", info.faceDetect);
    field("zoomRatio", info.zoomRatio);
    field("uiExtra", info.uiExtra);
    field("requestInfo", info.requestInfo);
    field("vendorResultInfo", info.vendorResultInfo);
    field("zuAlgoInfo", info.zuAlgoInfo);
    field("fstop", info.fstop);
    field("iso", info.iso);
    field("lux", info.lux);
    field("exposureTime", info.exposureTime);
    field("timeInfo", info.timeInfo);
    add('}');
}

void Line::put(const camInfosync::RequestRecord& record) {
    add('{');
    field("errorInfo", record.errorInfo);
    field("hasError", record.hasError);
    field("createTime", record.createTime);
    field("requestTime", record.requestTime);
    field("frameInfo", record.frameInfo);
    field("snapshotInfo", record.snapshotInfo);
    field("reserved64", record.reserved64);
    add('}');
}

void Line::putKey(int32_t key) {
    add('"');
    put(key);
    add('"');
}

void Line::grow(size_t count) {
    constexpr size_t kLeast = 1024;
    mText.resize(std::max({kLeast, 2 * mText.size(), mSize + count}));
}

void Line::shrinkTo(size_t capacity) {
    if (mText.size() > capacity) {
        std::string().swap(mText);  // assigned an empty one, it may keep its memory
        mSize = 0;
    }
}

}  // namespace recording
