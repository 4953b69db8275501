// What the library itself logs, read back.

#include <unistd.h>

#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <string>
#include <vector>

#include <android/log.h>
#include <gtest/gtest.h>

#include "CaptureLog.h"
#include "InfoSynchronizerManager.h"
#include "LineError.h"
#include "Logs.h"

namespace {

constexpr int32_t kPid = 4242;

// Never destroyed: the library logs while the process exits.
std::vector<logcat::LogEntry>& logged() {
    static auto* const entries = new std::vector<logcat::LogEntry>;
    return *entries;
}

}  // namespace

// The library logs here: as the platform's, of which 1,023 bytes survive.
extern "C" int __android_log_print(int /*priority*/, const char* tag, const char* format, ...) {
    char text[1024];
    va_list arguments;
    va_start(arguments, format);
    const int length = std::vsnprintf(text, sizeof(text), format, arguments);
    va_end(arguments);
    const int64_t at =
            INT64_C(1767225600) * logcat::kSecond + static_cast<int64_t>(logged().size()) * 1000000;
    logged().push_back({tag, text, at, kPid, kPid});
    return length;
}

namespace logcat {
namespace {

using camInfosync::InfoSynchronizerManager;

void play(const std::string& line) {
    std::vector<replay::LineError> errors;
    const replay::CaptureStep step = replay::readCaptureLine(line, "", errors);
    ASSERT_TRUE(errors.empty()) << line;
    if (step.kind == replay::CaptureStep::Kind::kCall) {
        step.run(InfoSynchronizerManager::getInstance());
    }
}

void playScenarios() {
    for (const char* name : {"plain-shot", "night-shot", "burst-of-eight"}) {
        std::ifstream scenario(std::string(SCENARIOS "/") + name + ".jsonl");
        for (std::string line; std::getline(scenario, line);) {
            play(line);
        }
    }
}

Seen readLogged(const std::vector<std::string>& formats) {
    std::string log;
    for (const LogEntry& entry : logged()) {
        log += formatted(formats, entry);
    }
    return readLogs({log}, 1767312000);
}

// Without what only some formats tell.
std::string plain(Seen seen) {
    for (view::Capture& capture : seen.captures) {
        capture.process.clear();
        capture.registered = capture.flushed = capture.removed = std::nullopt;
        for (view::Call& call : capture.calls) {
            call.tid = 0;
        }
        for (view::Finding& finding : capture.findings) {
            finding.place.line = 0;
        }
    }
    for (view::Finding& finding : seen.session.findings) {
        finding.place.line = 0;
    }
    seen.session.notes.clear();
    return textOf(seen);
}

class Library : public testing::Test {
  protected:
    Library() {
        InfoSynchronizerManager::getInstance();
        logged().clear();
    }
    ~Library() override {
        // The one that the scenarios leave registered.
        InfoSynchronizerManager::getInstance().unregisterSnapshotRequestRecord(
                "NIGHT_20260108_224523");
    }
    Library(const Library&) = delete;
    Library& operator=(const Library&) = delete;
};

TEST_F(Library, ScenariosAreToldAlikeInAllFormats) {
    playScenarios();
    const Seen reference = readLogged({"threadtime"});
    ASSERT_EQ(11U, reference.captures.size());
    for (const std::vector<std::string>& formats :
         {std::vector<std::string>{"threadtime", "year", "zone", "uid"},
          {"threadtime", "epoch", "usec"},
          {"time", "monotonic"},
          {"time", "nsec"},
          {"long", "uid"},
          {"long", "color"},
          {"brief"},
          {"brief", "color"},
          {"tag"},
          {"process", "uid"},
          {"thread"}}) {
        EXPECT_EQ(plain(reference), plain(readLogged(formats)))
                << formats.front() << ' ' << formats.back();
    }
}

TEST_F(Library, CaptureWithTroubleIsToldWhole) {
    playScenarios();
    Seen seen = readLogged({"threadtime", "epoch"});
    ASSERT_LT(1, seen.captures.size());
    EXPECT_EQ(R"(2 NIGHT_20260108_224519 in 4242: 600015 600025 600042
  timestamp 77121483340011
  camIds[0] 0
  node tone 0 - listed
  node denoise 77121990 77125902
  node fusion 77125903 77135903
  report of 6 events
  report of 6 events
  registerSnapshotRequestRecord 4242
  updateFrameInfo 4242
  updateFrameInfo 4242
  updateZuAlgoInfo 4242
  updateNodeProcTime 4242
  updateNodeProcTime 4242
  snapshotRequestInfoFlush 4242
  snapshotRequestInfoFlush 4242
  no effect: snapshotRequestInfoFlush 4242
  unregisterSnapshotRequestRecord 4242
  no_report_type snapshotRequestInfoFlush@42: snapshotRequestInfoFlush: reported nothing; type 0 does
)",
              textOf(seen.captures[1]));
    EXPECT_EQ(
            "  vendor_error @24: vendor result error_request, of a capture that the line does not "
            "tell\n",
            textOf(seen.session.findings));
    EXPECT_EQ("on: the service answers \"enabled\"", seen.session.switches["collection"]);
}

}  // namespace
}  // namespace logcat
