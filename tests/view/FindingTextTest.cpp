#include "FindingText.h"

#include <string>

#include <gtest/gtest.h>

#include "Capture.h"
#include "Finding.h"
#include "Sample.h"
#include "TerminalStyle.h"
#include "View.h"

namespace view {
namespace {

const TerminalStyle kStyle{80, false, false};

Session sampleSession() {
    Session session;
    session.sources = {"night.jsonl"};
    return session;
}

TEST(FindingText, BeginsWithThePlace) {
    const std::vector<Finding> findings = {
            sampleFinding(FindingKind::kVendorError, "result 63 is error_request\x1b[2J", 21),
            sampleFinding(FindingKind::kNeverRemoved, "never removed")};
    EXPECT_EQ(
            "    night.jsonl:21  result 63 is error_request\\x1b[2J\n"
            "                    never removed\n",
            findingLines(findings, sampleSession(), 4, kStyle));
    const std::string coloured = findingLines(findings, sampleSession(), 4, {80, false, true});
    EXPECT_EQ(0U, coloured.find("\033[31m    night.jsonl:21"));
    EXPECT_EQ(std::string::npos, coloured.find('\033', coloured.find('\n')));
    Session piped;
    piped.sources = {"-", "a\x1b"};
    EXPECT_EQ("standard input:3", placeText({0, 3}, piped));
    EXPECT_EQ("a\\x1b:4", placeText({1, 4}, piped));
    EXPECT_EQ("?:3", placeText({1, 3}, sampleSession()));
}

TEST(FindingText, ShowsTheFirstOfASession) {
    Session session = sampleSession();
    session.findings.assign(23, sampleFinding(FindingKind::kUnknownName, "no such capture", 5));
    const std::string text = sessionFindingLines(session, 2, kStyle);
    EXPECT_EQ(0u, text.find("  night.jsonl:5  no such capture\n"));
    EXPECT_NE(std::string::npos, text.find("\n  ... and 3 more\n"));
}

TEST(WorstFindings, HaveFailuresFirstThenTheOrderOfRegistration) {
    WorstFindings worst;
    const auto add = [&](uint64_t number, FindingKind kind) {
        Capture capture = sampleCapture(number, "IMG_" + std::to_string(number));
        capture.findings = {sampleFinding(kind, nameOf(kind), number)};
        worst.add(capture, sampleSession());
    };
    add(3, FindingKind::kNeverRemoved);
    add(2, FindingKind::kLate);
    add(9, FindingKind::kNodeError);
    add(1, FindingKind::kNoCompletion);
    EXPECT_EQ(
            "  night.jsonl:1  IMG_1  no_completion\n"
            "  night.jsonl:9  IMG_9  node_error\n"
            "  night.jsonl:2  IMG_2  late\n"
            "  night.jsonl:3  IMG_3  never_removed\n",
            worst.lines(2, kStyle));
    for (uint64_t number = 100; number < 130; ++number) {
        add(number, FindingKind::kVendorError);
    }
    const std::string text = worst.lines(2, kStyle);
    EXPECT_NE(std::string::npos, text.find("IMG_117  vendor_error\n  ... and 14 more\n"));
    EXPECT_EQ(std::string::npos, text.find("never_removed"));
    Capture capture = sampleCapture(0, "LONG");
    capture.findings = {sampleFinding(FindingKind::kVendorError, std::string(501, 'x'))};
    worst.add(capture, sampleSession());
    EXPECT_NE(std::string::npos, worst.lines(2, kStyle).find(" " + std::string(498, 'x') + "..\n"));
}

}  // namespace
}  // namespace view
