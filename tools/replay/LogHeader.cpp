#include "LogHeader.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <iostream>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

#include "FieldErrors.h"
#include "FieldReader.h"
#include "InputKind.h"
#include "JsonTree.h"
#include "LineError.h"
#include "LogFile.h"
#include "Printable.h"
#include "StrictJson.h"

namespace replay {
namespace {

constexpr std::string_view kFormat = "camInfosync capture log";
constexpr std::string_view kBeginning = "{\"format\":";
constexpr uint32_t kMajor = 1;

// Reads "MAJOR.MINOR". Returns whether `text` is that.
bool readVersion(const std::string& text, uint32_t& major) {
    uint32_t minor = 0;
    const char* end = text.data() + text.size();
    const auto first = std::from_chars(text.data(), end, major);
    if (first.ec != std::errc() || first.ptr == end || *first.ptr != '.') {
        return false;
    }
    const auto second = std::from_chars(first.ptr + 1, end, minor);
    return second.ec == std::errc() && second.ptr == end;
}

void checkVersion(const std::string& version, const Path& path, Errors& errors) {
    uint32_t major = 0;
    const std::string read = " this tool reads (" + std::to_string(kMajor) + ".x)";
    if (!readVersion(version, major)) {
        errors.add(path, "must be MAJOR.MINOR, as \"1.0\"");
    } else if (major > kMajor) {
        errors.add(path, version + " is newer than" + read);
    } else if (major < kMajor) {
        errors.add(path, version + " is none that" + read);
    }
}

void checkProperties(const LogHeader& header, const Path& path, Errors& errors) {
    for (const auto& [key, value] : header.properties) {
        if (key.empty() || key[0] == '#' ||
            key.find_first_of("= \t\r\v\f\n") != std::string::npos) {
            errors.add(Path{&path, key}, "is not the name of a property");
        }
    }
}

void readIfThere(const JsonValue& line, const char* field, std::optional<int64_t>& out,
                 Errors& errors) {
    if (const JsonValue* value = line.find(field); value != nullptr) {
        readValue(*value, out.emplace(), Path{nullptr, field}, errors);
    }
}

void readHeaderFields(const JsonValue& line, LogHeader& header, Errors& errors) {
    const Path top;  // the line
    std::string format;
    std::string version;
    readValue(*line.find("format"), format, Path{nullptr, "format"}, errors);
    if (!errors.any() && format != kFormat) {
        errors.add(Path{nullptr, "format"}, "must be \"" + std::string(kFormat) + '"');
    }
    if (errors.any()) {
        return;
    }
    const JsonValue* given = line.find("version");
    if (given == nullptr) {
        errors.add(Path{nullptr, "version"}, "is missing");
        return;
    }
    readValue(*given, version, Path{nullptr, "version"}, errors);
    if (!errors.any()) {
        checkVersion(version, Path{nullptr, "version"}, errors);
    }
    if (errors.any()) {
        return;  // of a newer version, only these two fields are known
    }
    Members(line, top, errors)
            .read("properties", header.properties)
            .read("service", header.service)
            .read("answers", header.answers)
            .read("cut", header.cut)
            .read("cutMore", header.moreCut)
            .read("process", header.process)
            .read("device", header.device)
            .read("build", header.build);
    readIfThere(line, "pid", header.pid, errors);
    readIfThere(line, "startMonotonic", header.startMonotonic, errors);
    readIfThere(line, "startReal", header.startReal, errors);
    checkProperties(header, Path{nullptr, "properties"}, errors);
}

// Whether `line` is the beginning of a header's text, or begins with one.
bool beginsAsHeader(std::string_view line) {
    const size_t length = std::min(line.size(), kBeginning.size());
    return length != 0 && line.substr(0, length) == kBeginning.substr(0, length);
}

// The first line that is neither empty nor a comment.
bool nextLine(LogFile& log, std::string& line) {
    while (log.next(line)) {
        const size_t begin = line.find_first_not_of(" \t\r");
        if (log.lineIsTooLong() || (begin != std::string::npos && line[begin] != '#')) {
            return true;
        }
    }
    return false;
}

bool readHeaderLine(LogFile& log, const std::string& line, LogHeader& header) {
    std::vector<LineError> errorList;
    bool isJson = true;
    JsonTree tree;
    const JsonValue* value = parseObject(line, tree, errorList, &isJson);
    const bool isHeader = value != nullptr && value->contains("format") && !value->contains("call");
    if (!isHeader && !beginsAsHeader(line)) {
        return true;
    }
    if (!isJson && !log.lineIsWhole()) {
        header.line = log.lineNumber();
        header.isCut = true;
        return true;
    }
    if (isHeader) {
        header.line = log.lineNumber();
        Errors errors(errorList, LineRules::kUnderHeader);
        readHeaderFields(*value, header, errors);
    }
    for (const LineError& error : errorList) {
        std::cerr << log.place() << ": " << error.field << ": " << error.what << '\n';
    }
    return errorList.empty();
}

}  // namespace

bool readHeader(LogFile& log, LogHeader& header) {
    const std::string_view beginning = log.beginning();
    const std::string kind = unreadableKind(beginning);
    if (!kind.empty()) {
        std::cerr << printable(log.name()) << ": " << kind << '\n';
        return false;
    }
    const bool mayHaveHeader = beginning.find("\"format\"") != std::string_view::npos;
    log.setLongestLine(mayHaveHeader ? LogFile::kLongestRecordedLine : LogFile::kLongestLine);
    std::string line;
    if (nextLine(log, line) && !log.lineIsTooLong() && !readHeaderLine(log, line, header)) {
        return false;
    }
    if (!header.exists()) {
        log.setLongestLine(LogFile::kLongestLine);
    }
    return true;
}

}  // namespace replay
