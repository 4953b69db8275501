// The events of a report, and the escapes in which a bug report has them.

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>

#include "Message.h"

namespace logcat {
namespace {

constexpr std::string_view kPipeline = R"(":{"pipeline_name":")";
constexpr std::string_view kTimestamp = R"(","timestamp":")";
constexpr std::string_view kCamera = R"(","cam_id":")";
constexpr std::string_view kStage = R"(","node_stage":")";

// What is before the last `mark` goes on in `text`, what is behind it into `after`. Without the
// mark nothing changes.
bool splitAtLast(std::string_view mark, std::string_view& text, std::string_view& after) {
    const size_t position = text.rfind(mark);
    if (position == std::string_view::npos) {
        return false;
    }
    after = text.substr(position + mark.size());
    text = text.substr(0, position);
    return true;
}

bool readInteger(std::string_view text, int64_t& number) {
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() && end == text.data() + text.size();
}

bool isOctal(char letter) {
    return letter >= '0' && letter <= '7';
}

// The byte that "\xNN" or "\NNN" stands for, and how long it is; 0 if it is neither.
size_t readByte(std::string_view escape, unsigned& byte) {
    if (escape.size() >= 4 && escape[1] == 'x') {
        const auto [end, error] = std::from_chars(escape.data() + 2, escape.data() + 4, byte, 16);
        return error == std::errc() && end == escape.data() + 4 ? 4 : 0;
    }
    size_t length = 1;
    for (byte = 0; length < escape.size() && length < 4 && isOctal(escape[length]); ++length) {
        byte = byte * 8 + static_cast<unsigned>(escape[length] - '0');
    }
    return length > 1 ? length : 0;
}

}  // namespace

std::string fromPrintable(std::string_view text) {
    constexpr std::string_view kLetters = "abtvfr\\";
    constexpr std::string_view kMeanings = "\a\b\t\v\f\r\\";
    std::string out;
    for (size_t i = 0; i < text.size();) {
        const std::string_view rest = text.substr(i);
        unsigned byte = 0;
        const size_t letter = rest[0] == '\\' && rest.size() > 1 ? kLetters.find(rest[1])
                                                                 : std::string_view::npos;
        const size_t length = rest[0] == '\\' ? readByte(rest, byte) : 0;
        if (letter != std::string_view::npos) {
            out += kMeanings[letter];
            i += 2;
        } else if (length != 0) {
            out += static_cast<char>(byte);
            i += length;
        } else {
            out += rest[0];
            i += 1;
        }
    }
    return out;
}

bool isWholeEvent(std::string_view event) {
    constexpr std::string_view kEnd = "\"}}";
    return event.size() > kEnd.size() && event.substr(event.size() - kEnd.size()) == kEnd;
}

NodeEvent readNodeEvent(std::string_view event, const std::optional<std::string>& expectedName) {
    NodeEvent read;
    std::string_view rest = event.substr(std::min<size_t>(event.size(), 2));  // {"
    std::string_view camera;
    std::string_view time;
    std::string_view ending;
    if (splitAtLast(kStage, rest, ending) && splitAtLast(kCamera, rest, camera) &&
        splitAtLast(kTimestamp, rest, time)) {
        read.hasTime = readInteger(time, read.time);
        read.camera = camera;
    }
    size_t name = std::string_view::npos;
    if (expectedName) {
        const std::string known = std::string(kPipeline) + *expectedName;
        name = rest.rfind(known);
    }
    name = name != std::string_view::npos ? name : rest.find(kPipeline);
    read.node = rest.substr(0, name);
    if (name != std::string_view::npos) {
        read.pipelineName = rest.substr(name + kPipeline.size());
    }
    return read;
}

SubmitEvent readSubmitEvent(std::string_view event) {
    constexpr std::string_view kBegin = R"({ "submit-request":{"pipeline_name":")";
    constexpr std::string_view kEnd = R"("}})";
    SubmitEvent read;
    std::string_view rest = event.substr(std::min(event.size(), kBegin.size()));
    std::string_view timestamp;
    read.isCut = !splitAtLast(kTimestamp, rest, timestamp);
    if (!read.isCut) {
        std::string_view ending;
        read.isCut = !splitAtLast(kEnd, timestamp, ending) || !ending.empty();
    }
    read.pipelineName = rest;
    read.timestamp = timestamp;
    return read;
}

}  // namespace logcat
