#include "TerminalView.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "Capture.h"
#include "Finding.h"
#include "MadeCaptures.h"
#include "Sample.h"
#include "TerminalStyle.h"
#include "TerminalText.h"
#include "View.h"
#include "ViewOptions.h"

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

TEST(TerminalView, ShowsUpTo20CapturesInFullAndOtherwiseWhatIsAskedFor) {
    struct Row {
        uint64_t captures;
        bool summary;
        bool failed;
        std::vector<std::string> images;
        size_t reports;
        bool isTable;
    };
    const Row kRows[] = {{1, false, false, {}, 1, false},
                         {20, false, false, {}, 20, true},
                         {21, false, false, {}, 0, true},
                         {1, true, false, {}, 0, true},
                         {50, true, true, {}, 1, true},
                         {6, false, true, {}, 0, true},
                         {50, true, true, {"IMG_42", "IMG_44"}, 3, true},
                         {50, false, false, {"IMG_42"}, 1, true}};
    for (const Row& row : kRows) {
        ViewOptions options;
        options.summary = row.summary;
        options.failed = row.failed;
        options.images = row.images;
        const std::string text = shown(row.captures, options);
        EXPECT_EQ(row.reports, count(text, "\ncapture ")) << row.captures;
        EXPECT_EQ(row.isTable ? 1u : 0u, count(text, "captures\n  capture ")) << row.captures;
    }
    const std::string twenty = shown(20);
    EXPECT_LT(twenty.find("\ncapture 1: IMG_1\n"), twenty.find("\ncapture 20: IMG_20\n"));
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

}  // namespace
}  // namespace view
