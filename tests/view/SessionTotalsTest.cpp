#include "SessionTotals.h"

#include <string>

#include <gtest/gtest.h>

#include "Capture.h"
#include "Finding.h"
#include "Sample.h"
#include "View.h"

namespace view {
namespace {

TEST(SessionTotals, NameTheFirstTen) {
    SessionTotals totals;
    for (int i = 1; i <= 12; ++i) {
        Capture capture =
                sampleCapture(1, i == 2 ? std::string(70, 'x') + "_2" : std::to_string(i));
        capture.isRemoved = false;
        capture.findings.assign(i == 3 ? 2 : 1, sampleFinding(FindingKind::kErrorText, "failed"));
        totals.add(capture);
    }
    const std::string cut = std::string(19, 'x') + ".." + std::string(37, 'x') + "_2";
    const std::string text = totals.text(Session());
    EXPECT_NE(std::string::npos, text.find("  records left     12: 1, " + cut +
                                           ", 3, 4, 5, 6, 7, 8, 9, 10, ... and 2 more\n"))
            << text;
    EXPECT_NE(std::string::npos, text.find("  failed captures  12: 1 (1 failure), " + cut +
                                           " (1 failure), 3 (2 failures), "));
}

TEST(SessionTotals, SayHowManyMoreNamesThereAre) {
    SessionTotals totals;
    for (int i = 1; i <= 11; ++i) {
        Capture capture = sampleCapture(1, std::to_string(i));
        capture.isRemoved = false;
        totals.add(capture);
    }
    EXPECT_NE(std::string::npos, totals.text(Session()).find(", 10, ... and 1 more\n"));
}

TEST(SessionTotals, CountCallsWithoutEffect) {
    SessionTotals totals;
    Capture capture = sampleCapture(1, "IMG_1");
    capture.isRegistered = capture.isRemoved = false;
    capture.findings = {sampleFinding(FindingKind::kLate, ""),
                        sampleFinding(FindingKind::kNeverRemoved, "")};
    totals.add(capture);
    Session session;
    session.findings = {sampleFinding(FindingKind::kCollectionOff, ""),
                        sampleFinding(FindingKind::kGap, "")};
    session.findings[0].calls = 7;
    EXPECT_EQ("1 capture, 0 failed, 8 calls without effect", totals.line(session));
    EXPECT_NE(std::string::npos, totals.text(session).find("  records left     0\n"));
}

}  // namespace
}  // namespace view
