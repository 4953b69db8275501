#include "Settings.h"

#include <cutils/properties.h>
#include <unistd.h>

#include <charconv>
#include <climits>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <string>
#include <system_error>

#include <android/log.h>

#include "Tag.h"

namespace recording {
namespace {

constexpr uint64_t kDefaultLimit = uint64_t{64} << 20U;
constexpr uint64_t kLeastLimit = uint64_t{64} << 10U;

std::string setting(const char* variable, const char* property) {
    if (const char* value = std::getenv(variable); value != nullptr) {
        return value;
    }
    char value[PROPERTY_VALUE_MAX] = {};
    property_get(property, value, "");
    return value;
}

std::string processName() {
    std::ifstream file("/proc/self/cmdline");
    std::string name;
    std::getline(file, name, '\0');
    return name;
}

bool isMeant(const std::string& process, const std::string& wanted) {
    return wanted.empty() || process == wanted || process.substr(process.rfind('/') + 1) == wanted;
}

uint64_t limitFrom(const std::string& text) {
    if (text.empty()) {
        return kDefaultLimit;
    }
    uint64_t limit = 0;
    const char* const end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, limit);
    if (error != std::errc() || rest != end || limit < kLeastLimit) {
        __android_log_print(ANDROID_LOG_WARN, kTag,
                            "the limit \"%s\" is no number of bytes from %llu; taking %llu",
                            text.c_str(), static_cast<unsigned long long>(kLeastLimit),
                            static_cast<unsigned long long>(kDefaultLimit));
        return kDefaultLimit;
    }
    return limit;
}

// Independent of where the process goes later.
std::string absolute(const std::string& folder) {
    char current[PATH_MAX];
    if (folder.empty() || folder.front() == '/' || getcwd(current, sizeof(current)) == nullptr) {
        return folder;
    }
    return std::string(current) + '/' + folder;
}

}  // namespace

Settings Settings::read() {
    Settings settings;
    const std::string folder = setting("INFOSYNC_RECORD", "debug.infosync.record");
    if (folder.empty()) {
        return settings;
    }
    settings.process = processName();
    if (isMeant(settings.process,
                setting("INFOSYNC_RECORD_PROCESS", "debug.infosync.record.process"))) {
        settings.folder = absolute(folder);
        settings.limit = limitFrom(setting("INFOSYNC_RECORD_LIMIT", "debug.infosync.record.limit"));
    }
    return settings;
}

}  // namespace recording
