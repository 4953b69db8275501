#include "InputKind.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <string>
#include <string_view>

#include <nlohmann/json.hpp>
#include <nlohmann/json_fwd.hpp>

namespace replay {
namespace {

using nlohmann::json;
using std::string_view_literals::operator""sv;

struct Signature {
    std::string_view bytes;
    std::string_view kind;
    std::string_view remedy;
};

constexpr Signature kSignatures[] = {
        {"\x1f\x8b"sv, "compressed by gzip", "gunzip"},
        {"\x28\xb5\x2f\xfd"sv, "compressed by zstd", "zstd -d"},
        {"\xfd"
         "7zXZ\0"sv,
         "compressed by xz", "xz -d"},
        {"PK\x03\x04"sv, "a zip archive", "unzip"},
        {"\xff\xfe"sv, "UTF-16", "iconv -f UTF-16 -t UTF-8"},
        {"\xfe\xff"sv, "UTF-16", "iconv -f UTF-16 -t UTF-8"},
        {"{\0"sv, "UTF-16", "iconv -f UTF-16LE -t UTF-8"},
        {"\0{"sv, "UTF-16", "iconv -f UTF-16BE -t UTF-8"},
};

// How lines of logcats and bug reports begin; 0 stands for any digit.
constexpr std::string_view kLogcatLines[] = {
        "--------- beginning of ", "== dumpstate: ",   "00-00 00:00:00",
        "0000-00-00 00:00:00",     "[ 00-00 00:00:00", "[ 0000-00-00 00:00:00",
};

bool beginsLike(std::string_view line, std::string_view form) {
    return line.size() >= form.size() &&
           std::equal(form.begin(), form.end(), line.begin(), [](char wanted, char given) {
               return wanted == '0' ? given >= '0' && given <= '9' : wanted == given;
           });
}

// Whether there is a line of a logcat before any that may be a call.
bool isLogcat(std::string_view text) {
    while (!text.empty() && text.front() != '{') {
        if (std::any_of(std::begin(kLogcatLines), std::end(kLogcatLines),
                        [&](std::string_view form) { return beginsLike(text, form); })) {
            return true;
        }
        const size_t end = text.find('\n');
        text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    }
    return false;
}

// Where the text of the first JSON value is no longer JSON, or where the text ends.
size_t endOfJson(std::string_view text) {
    try {
        const json value = json::parse(text);
        return text.size();
    } catch (const json::parse_error& error) {
        return error.byte - 1;
    } catch (const json::exception&) {
        return 0;
    }
}

// Whether one JSON value goes on past the second line.
bool isOverSeveralLines(std::string_view text) {
    const size_t begin = text.find_first_not_of(" \t\r\n");
    if (begin == std::string_view::npos || (text[begin] != '{' && text[begin] != '[')) {
        return false;
    }
    const size_t first = text.find('\n', begin);
    const size_t second = first != std::string_view::npos ? text.find('\n', first + 1) : first;
    if (second == std::string_view::npos || json::accept(text.substr(begin, first - begin))) {
        return false;
    }
    return endOfJson(text.substr(0, text.find('\0'))) > second;
}

}  // namespace

std::string compressedKind(std::string_view beginning, std::string_view wanted) {
    for (const auto& [bytes, kind, remedy] : kSignatures) {
        if (beginning.substr(0, bytes.size()) == bytes) {
            return "is " + std::string(kind) + "; \"" + std::string(remedy) + "\" makes " +
                   std::string(wanted) + " of it";
        }
    }
    return {};
}

std::string unreadableKind(std::string_view beginning) {
    const std::string compressed = compressedKind(beginning, "a capture log");
    if (!compressed.empty()) {
        const bool isZip = beginning.substr(0, 2) == "PK";
        return compressed + (isZip ? "; infosync-logcat reads bug reports" : "");
    }
    if (isLogcat(beginning)) {
        return "is a logcat or a bug report, which infosync-logcat reads";
    }
    return isOverSeveralLines(beginning)
                   ? "has JSON that goes over several lines; a capture log has one object per "
                     "line, as \"jq -c\" writes it"
                   : "";
}

}  // namespace replay
