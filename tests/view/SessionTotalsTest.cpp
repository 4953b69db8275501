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
        Capture capture = sampleCapture(
                1, i == 2 ? "\\\a\x7f\xc2\x9b" + std::string(60, 'x') : std::to_string(i));
        capture.isRemoved = i == 12;
        capture.findings.assign(i == 3 ? 2 : 1, sampleFinding(FindingKind::kErrorText, "failed"));
        totals.add(capture);
        if (i == 10) {
            EXPECT_EQ(std::string::npos, totals.text(Session()).find("more"));
        }
    }
    const std::string cut = "\\\\\\x07\\x7f\\xc2\\x9bx.." + std::string(39, 'x');
    Session session;
    session.switches["collection"] = "on";
    session.calls = 144;
    session.flushes = 8;
    session.reports = 9;
    EXPECT_EQ(
            "totals\n"
            "  collection       on\n"
            "  calls made       144\n"
            "  flush calls      8\n"
            "  reports          9\n"
            "  service calls    not known\n"
            "  records left     11: 1, " +
                    cut +
                    ", 3, 4, 5, 6, 7, 8, 9, 10, ... and 1 more\n"
                    "  failed captures  12: 1 (1 failure), " +
                    cut +
                    " (1 failure), 3 (2 failures), "
                    "4 (1 failure), 5 (1 failure), 6 (1 failure), 7 (1 failure), 8 (1 failure), "
                    "9 (1 failure), 10 (1 failure), ... and 2 more\n",
            totals.text(session));
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
    session.findings[1].kind = FindingKind::kVendorError;
    EXPECT_EQ("1 capture, 0 failed, 8 calls without effect, 1 failure of no known capture",
              totals.line(session));
}

}  // namespace
}  // namespace view
