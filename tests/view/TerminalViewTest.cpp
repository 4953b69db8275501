#include "TerminalView.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <sstream>
#include <string>

#include <gtest/gtest.h>

#include "Capture.h"
#include "Finding.h"
#include "MadeCaptures.h"
#include "Sample.h"
#include "TerminalStyle.h"
#include "TerminalText.h"
#include "View.h"
#include "ViewOptions.h"
#include "Views.h"

namespace view {
namespace {

// What is shown of that many captures, the last of which comes first; the seventh, or the
// only one, has failed.
std::string shown(uint64_t captures, const ViewOptions& options = {}) {
    return writtenBy([&](std::FILE* file) {
        TerminalView terminal(options, file, {80, false, false});
        Session session;
        session.sources = {"log"};
        for (uint64_t number = captures; number > 0; --number) {
            Capture capture = sampleCapture(number, "IMG_" + std::to_string(number));
            if (number == 7 || captures == 1) {
                capture.findings = {sampleFinding(FindingKind::kNodeError, "mfnr failed", 70)};
                capture.isRemoved = false;
            }
            terminal.add(capture, session);
        }
        session.findings = {sampleFinding(FindingKind::kUnknownName, "no capture IMG_0", 3)};
        session.calls = 144;
        session.flushes = 8;
        session.reports = 9;
        session.switches["collection"] = "on";
        session.notes = {"3 lines are missing"};
        terminal.finish(session);
    });
}

bool has(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

size_t count(const std::string& text, const std::string& part) {
    size_t count = 0;
    for (size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) {
        ++count;
    }
    return count;
}

TEST(TerminalView, SaysWhatWentWrongBeforeAnythingElse) {
    EXPECT_EQ(0u, shown(8).find("note: 3 lines are missing\n"
                                "findings\n"
                                "  log:3  no capture IMG_0\n"
                                "  log:70  IMG_7  mfnr failed\n"
                                "\n"
                                "captures\n"));
    EXPECT_EQ(1u, count(shown(1), "mfnr failed"));
    ViewOptions options;
    options.notesAreTold = true;
    EXPECT_EQ(0u, shown(8, options).find("findings\n  log:3"));
}

TEST(TerminalView, ShowsUpTo20CapturesInFull) {
    const std::string twenty = shown(20);
    EXPECT_EQ(20u, count(twenty, "\ncapture "));
    EXPECT_LT(twenty.find("capture 1: IMG_1\n"), twenty.find("capture 20: IMG_20\n"));
    EXPECT_TRUE(has(twenty, "\n  IMG_20 "));
    EXPECT_EQ(0u, count(shown(21), "\ncapture "));
    EXPECT_TRUE(has(shown(21), "\n  IMG_21 "));
    EXPECT_EQ(0u, count(shown(1), "captures\n"));
    EXPECT_EQ(1u, count(shown(1), "\ncapture 1: IMG_1\n"));
}

TEST(TerminalView, ShowsWhatIsAskedFor) {
    ViewOptions options;
    options.summary = true;
    EXPECT_EQ(0u, count(shown(1, options), "\ncapture "));
    EXPECT_TRUE(has(shown(1, options), "captures\n"));
    options.failed = true;
    EXPECT_EQ(1u, count(shown(50, options), "\ncapture "));
    EXPECT_EQ(0u, count(shown(6, options), "\ncapture "));
    options.images = {"IMG_42", "IMG_44"};
    EXPECT_EQ(3u, count(shown(50, options), "\ncapture "));
    EXPECT_TRUE(has(shown(50, options), "\ncapture 44: IMG_44\n"));
    options = {};
    options.images = {"IMG_42"};
    EXPECT_EQ(1u, count(shown(50, options), "\ncapture "));
    options.sort = "findings";
    EXPECT_LT(shown(50, options).find("\n  IMG_7 "), shown(50, options).find("\n  IMG_1 "));
}

TEST(TerminalView, EndsWithTheTotals) {
    EXPECT_TRUE(has(shown(8),
                    "\n8 captures, 1 failed, 1 call without effect\n"
                    "\n"
                    "totals\n"
                    "  collection       on\n"
                    "  calls made       144\n"
                    "  flush calls      8\n"
                    "  reports          9\n"
                    "  service calls    not known\n"
                    "  records left     1: IMG_7\n"
                    "  failed captures  1: IMG_7 (1 failure)\n"));
}

TEST(TerminalView, LetsNoTextControlTheTerminal) {
    ViewOptions options;
    options.failed = true;
    const Session session = madeSession(true);
    const std::string text = writtenBy([&](std::FILE* file) {
        TerminalView terminal(options, file, {80, true, false});
        for (uint64_t number = 1; number <= 200; ++number) {
            terminal.add(hostileCapture(number), session);
        }
        terminal.finish(session);
    });
    EXPECT_TRUE(has(text, "window.broken=1"));
    const auto isControl = [](char byte) { return (byte >= 0 && byte < ' ' && byte != '\n'); };
    EXPECT_TRUE(std::none_of(text.begin(), text.end(), isControl));
    EXPECT_EQ(std::string::npos, text.find(std::string("\xE2\x80") + "\xAE"));
    std::istringstream table(text.substr(text.find("\ncaptures\n") + 1));
    for (std::string line; std::getline(table, line) && !line.empty();) {
        EXPECT_GE(80u, columnsOf(line)) << line;
    }
}

TEST(Views, ShowNothingIfQuietAndStillKnowWhetherThereAreFindings) {
    ViewOptions options;
    const Session session;
    options.quiet = true;
    const std::string text = writtenBy([&](std::FILE* file) {
        Views views(options, file);
        Capture capture = sampleCapture(1, "IMG_1");
        capture.findings = {sampleFinding(FindingKind::kNeverRemoved, "never removed")};
        views.add(capture, session);
        EXPECT_FALSE(views.hasFindings());
        capture.findings = {sampleFinding(FindingKind::kStageOutOfRange, "stage 15")};
        views.add(capture, session);
        EXPECT_TRUE(views.hasFindings());
        views.finish(session);
    });
    EXPECT_EQ("", text);
}

TEST(Views, ShowCapturesAndTheSession) {
    const Session session;
    const std::string text = writtenBy([&](std::FILE* file) {
        Views views(ViewOptions(), file);
        views.add(sampleCapture(1, "IMG_1"), session);
        views.finish(session);
        EXPECT_FALSE(views.hasFindings());
    });
    EXPECT_TRUE(has(text, "capture 1: IMG_1\n"));
    EXPECT_TRUE(has(text, "1 capture, 0 failed, 0 calls without effect\n"));
}

}  // namespace
}  // namespace view
