// In place of ZippedReport.cpp where libzip is missing.

#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>

#include "Input.h"

namespace logcat {

std::unique_ptr<Input> openZippedReport(const std::string& path, int64_t /*date*/) {
    throw std::runtime_error(path +
                             ": is a zip archive, and this program was built without libzip "
                             "(on Debian: libzip-dev); unzip it, and give the text in it");
}

}  // namespace logcat
