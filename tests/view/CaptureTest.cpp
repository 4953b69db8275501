#include "Capture.h"

#include <limits>
#include <string>

#include <gtest/gtest.h>

#include "Finding.h"

namespace view {
namespace {

Node ran(const char* name, double start, double completion) {
    Node node;
    node.name = name;
    node.start = start;
    node.completion = completion;
    return node;
}

TEST(Capture, NamesTheNodeThatTookLongest) {
    Capture capture;
    EXPECT_EQ(nullptr, capture.slowestNode());
    capture.nodes = {ran("endless", 0, std::numeric_limits<double>::infinity()), Node{}};
    EXPECT_EQ(nullptr, capture.slowestNode());
    capture.nodes.push_back(ran("backwards", 5, 2));
    capture.nodes.push_back(ran("fusion", 10, 440));
    capture.nodes.push_back(ran("tone", 900, 930));
    ASSERT_NE(nullptr, capture.slowestNode());
    EXPECT_EQ("fusion", capture.slowestNode()->name);
    EXPECT_EQ(-3.0, capture.nodes[2].duration());
}

TEST(Capture, TakesFromItsRegistrationToItsFlush) {
    Capture capture;
    capture.registered = 1'000'000;
    EXPECT_FALSE(capture.duration());
    capture.flushed = 3'500'000;
    EXPECT_EQ(2.5, capture.duration());
}

TEST(Capture, HasFailedIfAFindingMeansFailure) {
    Capture capture;
    for (const FindingKind kind : {FindingKind::kLate, FindingKind::kNeverRemoved}) {
        capture.findings.push_back({kind, "", "", {}, {}});
        EXPECT_FALSE(capture.hasFailed());
    }
    capture.findings.push_back({FindingKind::kVendorError, "", "", {}, {}});
    EXPECT_TRUE(capture.hasFailed());
}

TEST(Stage, IsAnInstantIfItsNumberIsATime) {
    EXPECT_FALSE((Stage{0, "", -1}.isInstant()));
    EXPECT_FALSE((Stage{6, "", 12}.isInstant()));
    EXPECT_FALSE((Stage{7, "", 0}.isInstant()));
    EXPECT_FALSE((Stage{11, "", 0}.isInstant()));
    EXPECT_FALSE((Stage{3, "", -4}.isInstant()));
    EXPECT_TRUE((Stage{11, "", 40}.isInstant()));
    EXPECT_TRUE((Stage{14, "", 0}.isInstant()));
}

}  // namespace
}  // namespace view
