// Reads bytes as a capture log, makes the calls that it asks for, and checks what the readers
// say about each line.

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include <zudebug/Log.h>
#include <nlohmann/json.hpp>

#include "CaptureLog.h"
#include "Check.h"
#include "InfoSynchronizerManager.h"
#include "LogFile.h"

namespace {

using camInfosync::InfoSynchronizerManager;
using nlohmann::json;
using replay::CaptureStep;

// The lines of a file that holds `bytes`, read twice.
std::vector<std::string> readFile(const std::string& bytes) {
    const int file = memfd_create("log", 0);
    FUZZ_CHECK(write(file, bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size()));
    replay::LogFile log("/proc/self/fd/" + std::to_string(file));
    close(file);
    std::vector<std::string> lines;
    for (int pass = 0; pass < 2; ++pass, log.rewind()) {
        std::string all;
        lines.clear();
        for (std::string line; log.next(line); all += line + '\n') {
            FUZZ_CHECK(!log.lineIsTooLong() && line.find('\n') == std::string::npos);
            lines.push_back(line);
        }
        FUZZ_CHECK(all == bytes || all == bytes + '\n');  // the last newline may be missing
        FUZZ_CHECK(log.lineNumber() == lines.size() && log.position() == bytes.size());
    }
    return lines;
}

bool isPrintable(const std::string& text) {
    return std::none_of(text.begin(), text.end(),
                        [](unsigned char byte) { return byte < 0x20 || byte == 0x7f; });
}

// A line that is accepted says what the step does.
void checkStep(const std::string& line, const CaptureStep& step) {
    if (step.kind == CaptureStep::Kind::kNothing) {
        const size_t begin = line.find_first_not_of(" \t\r");
        FUZZ_CHECK(begin == std::string::npos || line[begin] == '#');
        return;
    }
    FUZZ_CHECK(line.find('\0') == std::string::npos);  // where the parser would stop reading
    const json object = json::parse(line, nullptr, false);
    FUZZ_CHECK(object.is_object());
    if (step.kind == CaptureStep::Kind::kSleep) {
        FUZZ_CHECK(object.at("sleepMs") == step.sleep.count());
        FUZZ_CHECK(step.sleep.count() >= 0 && step.sleep.count() <= 60'000);
    } else if (step.kind == CaptureStep::Kind::kCall) {
        const json thread = object.value("thread", json(""));
        FUZZ_CHECK(thread.is_object() || thread == step.thread);
        FUZZ_CHECK((object.at("call") == "snapshotRequestInfoFlush") == step.isFlush);
        FUZZ_CHECK(step.run != nullptr);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size) {
    zudebug::gZuCamLogLevel = INT32_MAX;
    InfoSynchronizerManager& manager = InfoSynchronizerManager::getInstance();
    manager.mRequestRecordQueue = std::make_shared<camInfosync::RequestRecordQueue>();
    const std::string log(reinterpret_cast<const char*>(bytes), size);
    for (const std::string& line : readFile(log)) {
        std::vector<replay::LineError> errors;
        CaptureStep step = replay::readCaptureLine(line, "#1", errors);
        for (const replay::LineError& error : errors) {
            FUZZ_CHECK(isPrintable(error.field) && isPrintable(error.what) && !error.what.empty());
        }
        if (errors.empty()) {
            checkStep(line, step);
            if (step.kind == CaptureStep::Kind::kCall) {
                step.run(manager);
            }
        }
    }
    return 0;
}
