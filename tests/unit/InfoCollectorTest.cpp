// The report on a snapshot, byte for byte.

#include <cmath>
#include <limits>

#include "Doubles.h"
#include "InfoCollector.h"
#include "RequestRecord.h"

namespace camInfosync {
namespace {

class Collector : public doubles::Test {
  protected:
    Collector() { doubles::takeJournal(); }
    ~Collector() override { InfoSynchronizer::mIntentAwareImpl = doubles::service(); }

    // The calls that the report consists of, without the messages.
    std::vector<std::string> report() {
        collector.requestInfo(&record);
        std::vector<std::string> calls;
        for (const std::string& line : doubles::takeJournal()) {
            if (line.back() == ')') {
                calls.push_back(line);
            }
        }
        return calls;
    }

    RequestRecord record{REQUEST_TYPE_DEFAULT};
    SnapshotInfo& snapshot = record.snapshotInfo;
    SnapshotInfo::ZuAlgoInfo& algo = snapshot.zuAlgoInfo;
    InfoCollector collector{INFO_SYNC_TYPE_COLLECT};
};

TEST_F(Collector, ReportsEverythingInItsOrder) {
    record.frameInfo = {7, "123", {4294967295U, 5}, 9, "IMG_%s%n"};
    record.errorInfo = {"not reported"};
    snapshot.timeInfo = {{"not reported", 1}};
    snapshot.iso = -100;
    snapshot.lux = 1.5F;
    snapshot.faceDetect = -2;
    snapshot.camMode = 4000000000U;
    snapshot.fstop = -0.25F;
    snapshot.zoomRatio = 2.75F;
    snapshot.exposureTime = -33000000000;
    algo.algoTimeA = {{"b", 3.9}, {"a", 1.2}, {"B", -1520.7}};
    algo.algoTimeB = {{"b", -1.0}};
    algo.algoTimeC = {{"a", 5.0}, {"not reported", 6.0}, {"b", 7.5}};
    collector.requestInfo(&record);
}

TEST_F(Collector, WithoutCamerasOneFieldIsMinusOneAndTheOtherEmpty) {
    algo.algoTimeA = {{"q\"\\", 0.0}};  // goes out as it is, also where that is no JSON
    collector.requestInfo(&record);
}

TEST_F(Collector, TextsAreNeverInterpreted) {
    const std::string text = std::string(1 << 20, 'x') + std::string("\0%s%n\xff\xc3(\"\\", 10);
    record.frameInfo.imageName = record.frameInfo.timestamp = text;
    algo.algoTimeA = algo.algoTimeC = {{text, 1.0}};
    const std::vector<std::string> calls = report();
    const std::string name = R"({"pipeline_name":")" + text + R"(","timestamp":")";
    const std::string node = "reportEvent(" + text + R"(, {")" + text + "\":" + name;
    EXPECT_EQ(calls.at(8),
              "reportEvent(" + text + R"(, { "submit-request":)" + name + text + R"("}}))");
    EXPECT_EQ(calls.at(9), node + R"(1","cam_id":"","node_stage":"0"}}))");
    EXPECT_EQ(calls.at(10), node + R"(1","cam_id":"","node_stage":"2"}}))");
}

TEST_F(Collector, WithoutAServiceTheReportIsStillLogged) {
    algo.algoTimeA = {{"n", 1.0}};
    algo.algoTimeC = {{"n", 2.0}};
    InfoSynchronizer::mIntentAwareImpl = nullptr;
    collector.requestInfo(&record);
}

TEST_F(Collector, NumbersAreTruncatedAndSaturated) {
    constexpr double inf = std::numeric_limits<double>::infinity();
    std::vector<std::string> seen;
    for (const double number : {1.9, -0.5, -2.75, 2147483520.0, 2147483648.0, -2147483648.0, 1e30,
                                -1e30, 9223372036854774784.0, 9223372036854775808.0, inf, -inf,
                                // as floats; halves of a millionth go to the even one
                                -0.0, 0.99999994, 0.0078125, -0.0234375, 1e-7, 6e-7, 999999.9375,
                                -999999995904.0, 1000000061440.0}) {
        snapshot.lux = snapshot.zoomRatio = static_cast<float>(number);
        algo.algoTimeA["n"] = algo.algoTimeC["n"] = number;
        const std::vector<std::string> calls = report();
        seen.push_back(calls.at(1) + " " + calls.at(6) + " " + calls.at(9) + " " + calls.at(10));
    }
    // Without the lux: a NaN's sign is printed, and which one it has is the machine's.
    snapshot.zoomRatio = std::nanf("");
    algo.algoTimeA["n"] = std::nan("");
    const std::vector<std::string> calls = report();
    seen.push_back(calls.at(6) + " " + calls.at(9));
    for (const std::string& line : seen) {
        doubles::note(line);
    }
}

TEST_F(Collector, ServiceIsLookedAtBeforeEachCall) {
    algo.algoTimeA = algo.algoTimeC = {{"n", 1.0}};
    for (size_t last = 1; last <= 12; ++last) {
        InfoSynchronizer::mIntentAwareImpl = doubles::service();
        size_t calls = 0;
        doubles::onCall = [&calls, last](const auto& /*call*/) {
            if (++calls == last) {
                InfoSynchronizer::mIntentAwareImpl = nullptr;
            }
        };
        EXPECT_EQ(report().size(), last);
    }
}

TEST_F(Collector, RecordIsCopiedBeforeTheFirstCallAndNeverChanged) {
    record.frameInfo.imageName = "IMG";
    record.frameInfo.camIds = {3};
    algo.algoTimeA = {{"n", 1.0}};
    const std::vector<std::string> expected = report();
    doubles::onCall = [this](const auto& /*call*/) {
        record = RequestRecord(REQUEST_TYPE_DEFAULT);
    };
    EXPECT_EQ(report(), expected);
    EXPECT_EQ(expected.size(), 11U);
}

}  // namespace
}  // namespace camInfosync
