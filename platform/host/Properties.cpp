// The property store of libcutils: "build.prop" in the host root, with the environment's
// INFOSYNC_HOST_PROPERTIES, a text of the same format, laid over it. If there is neither, one
// line on standard error says so.

#include <cutils/properties.h>

#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <iostream>
#include <map>
#include <sstream>
#include <string>
#include <string_view>

#include "HostRoot.h"

namespace {

using Properties = std::map<std::string, std::string, std::less<>>;

std::string_view trimmed(std::string_view text) {
    constexpr std::string_view kBlanks = " \t\r\v\f";
    const size_t begin = text.find_first_not_of(kBlanks);
    if (begin == std::string_view::npos) {
        return {};
    }
    return text.substr(begin, text.find_last_not_of(kBlanks) - begin + 1);
}

// Reads lines "key=value". A line that begins with # is a comment; the last line of a key wins.
void readInto(Properties& properties, std::istream& stream, const std::string& name) {
    for (std::string line; std::getline(stream, line);) {
        const std::string_view text = trimmed(line);
        const size_t equals = text.find('=');
        if (text.empty() || text.front() == '#') {
            continue;
        }
        if (equals == std::string_view::npos) {
            std::cerr << name << ": passing over a line that is not key=value: " << text << '\n';
            continue;
        }
        properties.insert_or_assign(std::string(trimmed(text.substr(0, equals))),
                                    std::string(trimmed(text.substr(equals + 1))));
    }
}

Properties readProperties() {
    Properties properties;
    const std::string path = hostRoot() + "/build.prop";
    std::ifstream file(path);
    readInto(properties, file, path);
    if (const char* overlay = std::getenv("INFOSYNC_HOST_PROPERTIES"); overlay != nullptr) {
        std::istringstream stream(overlay);
        readInto(properties, stream, "INFOSYNC_HOST_PROPERTIES");
    } else if (!file.is_open()) {
        std::cerr << "no properties found: \"" << path << "\" cannot be read and "
                  << "INFOSYNC_HOST_PROPERTIES is not set; each property has its default\n";
    }
    return properties;
}

// The property's value; empty where there is none.
const std::string& valueOf(const char* key) {
    static const Properties properties = readProperties();
    static const std::string none;
    const auto property = key != nullptr ? properties.find(key) : properties.end();
    return property != properties.end() ? property->second : none;
}

}  // namespace

int8_t property_get_bool(const char* key, int8_t default_value) {
    const std::string& value = valueOf(key);
    for (const char* yes : {"1", "y", "yes", "on", "true"}) {
        if (value == yes) {
            return 1;
        }
    }
    for (const char* no : {"0", "n", "no", "off", "false"}) {
        if (value == no) {
            return 0;
        }
    }
    return default_value;
}

int property_get(const char* key, char* value, const char* default_value) {
    std::string_view text = valueOf(key);
    if (text.empty() && default_value != nullptr) {
        text = default_value;
    }
    const size_t length = text.copy(value, PROPERTY_VALUE_MAX - 1);
    value[length] = '\0';
    return static_cast<int>(length);
}
