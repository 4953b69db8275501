#include "Statistics.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "Allocations.h"
#include "Figures.h"
#include "Row.h"
#include "SampleRows.h"

namespace stats {
namespace {

std::vector<rows::CaptureRow> samples(int64_t count) {
    std::vector<rows::CaptureRow> rows;
    for (int64_t i = 1; i <= count; ++i) {
        rows.push_back(sampleCapture(i, 100 * i));
    }
    return rows;
}

template <typename Rows>
void addAll(Statistics& statistics, const Rows& rows) {
    for (const auto& row : rows) {
        statistics.add(row);
    }
}

std::vector<std::string> slowestOf(const Statistics& statistics) {
    std::vector<std::string> names;
    for (const SlowCapture& capture : statistics.slowest().captures()) {
        names.push_back(capture.name);
    }
    return names;
}

TEST(Statistics, CountsWhyCapturesFail) {
    Statistics statistics("");
    const std::array<rows::Whole rows::CaptureRow::*, 6> kinds = {
            &rows::CaptureRow::vendorErrors,   &rows::CaptureRow::nodeTimeOuts,
            &rows::CaptureRow::nodeErrors,     &rows::CaptureRow::errorTexts,
            &rows::CaptureRow::resultsMissing, &rows::CaptureRow::noCompletions};
    for (const auto kind : kinds) {
        rows::CaptureRow row = sampleCapture(1, 1);
        row.vendorErrors = 0;
        row.*kind = 3;  // in one capture
        row.hasFailed = true;
        statistics.add(row);
    }
    rows::CaptureRow unflushed = sampleCapture(7, 1);
    unflushed.isFlushed = false;
    unflushed.callsWithoutEffect = 4;
    statistics.add(unflushed);  // which its source cannot blame it for
    unflushed.hasFailed = true;
    statistics.add(unflushed);

    EXPECT_EQ(8U, statistics.all().captures);
    EXPECT_EQ(7U, statistics.all().failed);
    EXPECT_EQ((std::array<uint64_t, 7>{1, 1, 1, 1, 1, 1, 1}), statistics.all().failures);
    EXPECT_EQ(2U, statistics.all().withoutEffect);
}

TEST(Statistics, CountsTheTimesOfCapturesAndNodes) {
    Statistics statistics("");
    rows::CaptureRow row = sampleCapture(1, 500);
    row.stages[1] = 0;
    row.stages[14] = 90;
    statistics.add(row);
    row.toFlush.reset();
    statistics.add(row);
    rows::NodeRow node = sampleNode("merge", 40);
    statistics.add(node);
    node.timedOut = true;
    statistics.add(node);
    node.took.reset();
    node.hasFailed = true;
    statistics.add(node);

    const Figures& all = statistics.all();
    EXPECT_EQ(1U, all.toFlush.count());
    EXPECT_EQ(500, all.toFlush.maximum());
    EXPECT_EQ(0U, all.stages[0].count());
    EXPECT_EQ(2U, all.stages[1].count());
    EXPECT_EQ(90, all.stages[14].minimum());
    const NodeFigures& merge = all.nodes.named().at("merge");
    EXPECT_EQ(3U, merge.nodes);
    EXPECT_EQ(1U, merge.failed);
    EXPECT_EQ(2U, merge.timeOuts);
    EXPECT_EQ(2U, merge.took.count());
}

TEST(Statistics, TakesShotToShotFromTheStageIfOneTellsIt) {
    Statistics statistics("");
    addAll(statistics, samples(3));
    EXPECT_FALSE(statistics.all().hasStage());
    EXPECT_EQ(2U, statistics.all().shots().count());
    EXPECT_EQ(1000, statistics.all().shots().maximum());

    rows::CaptureRow told = sampleCapture(4, 1);
    told.shotToShot = 77;
    statistics.add(told);
    EXPECT_TRUE(statistics.all().hasStage());
    EXPECT_EQ(1U, statistics.all().shots().count());
    EXPECT_EQ(77, statistics.all().shots().maximum());
}

// As they are completed, not as they were registered.
TEST(Statistics, FindsTheSameGapsInAnyOrder) {
    std::vector<rows::CaptureRow> rows = samples(200);
    for (rows::CaptureRow& row : rows) {
        row.camMode = row.captureSeq % 2;
        row.registeredAt = 1000 * row.captureSeq + 10 * (row.captureSeq % 2);
    }
    std::mt19937 random(1);
    for (int round = 0; round < 5; ++round) {
        Statistics statistics("cam_mode");
        addAll(statistics, rows);
        EXPECT_EQ(199U, statistics.all().gaps.count());
        const auto& groups = statistics.groups().named();
        EXPECT_EQ(100U, groups.at("0").gaps.count());  // those before them
        EXPECT_EQ(990, groups.at("0").gaps.minimum());
        EXPECT_EQ(990, groups.at("0").gaps.maximum());
        EXPECT_EQ(99U, groups.at("1").gaps.count());
        EXPECT_EQ(1010, groups.at("1").gaps.minimum());
        std::shuffle(rows.begin(), rows.end(), random);
    }
}

TEST(Statistics, FindsNoGapBetweenProcessesAndRuns) {
    std::vector<rows::CaptureRow> rows = samples(4);
    rows[2].process = rows[3].process = "another";
    rows::CaptureRow ofAnotherRun = sampleCapture(5, 1);
    ofAnotherRun.runId = ofAnotherRun.process.emplace("another");
    rows.push_back(ofAnotherRun);
    Statistics statistics("");
    addAll(statistics, rows);
    EXPECT_EQ(2U, statistics.all().gaps.count());
}

TEST(Statistics, GroupsByAColumnOfCapturesOrNodes) {
    rows::CaptureRow capture = sampleCapture(1, 1);
    rows::NodeRow node = sampleNode("merge", 5);
    capture.build = node.build = "b1";
    capture.zoomRatio = 1.2345;
    capture.exposureTime = rows::InText<int64_t>{-7};
    const auto groupOf = [&](const char* column) {
        Statistics statistics(column);
        statistics.add(capture);
        statistics.add(node);
        const auto& [name, figures] = *statistics.groups().named().begin();
        return std::string(column) + ' ' + name + ' ' + std::to_string(figures.captures) +
               std::to_string(figures.everyNode.nodes) + std::to_string(figures.toFlush.count()) +
               std::to_string(figures.nodes.named().size());
    };
    EXPECT_EQ("build b1 1111", groupOf("build"));
    EXPECT_EQ("cam_mode (not known) 1111", groupOf("cam_mode"));
    EXPECT_EQ("is_flushed true 1010", groupOf("is_flushed"));
    EXPECT_EQ("zoom_ratio 1.2345 1010", groupOf("zoom_ratio"));
    EXPECT_EQ("exposure_time -7 1010", groupOf("exposure_time"));
    EXPECT_EQ("node merge 0101", groupOf("node"));
    EXPECT_EQ("timed_out false 0101", groupOf("timed_out"));

    for (const std::string column : {"cam_mode", "is_listed"}) {
        std::string near = column.substr(0, column.size() - 1);
        try {
            const Statistics statistics(near);
            ADD_FAILURE() << "there is no such column";
        } catch (const std::runtime_error& error) {
            EXPECT_EQ("--by: rows have no column " + near.append("; did you mean ") + column + "?",
                      error.what());
        }
    }
}

TEST(Statistics, CountsTheRestOfTooManyNamesTogether) {
    constexpr size_t kTooMany = Figures::kMostNodes + 30;
    Statistics statistics("node");
    for (size_t i = 0; i < kTooMany; ++i) {
        statistics.add(sampleNode(std::to_string(i), 5));
    }
    statistics.add(sampleNode("0", 5));
    const Figures& all = statistics.all();
    EXPECT_EQ(Figures::kMostNodes, all.nodes.named().size());
    EXPECT_EQ("2", std::next(all.nodes.named().begin(), 2)->first);
    EXPECT_EQ(2U, all.nodes.named().at("0").nodes);
    EXPECT_EQ(30U, all.nodes.rest()->nodes);
    EXPECT_EQ(Statistics::kMostGroups, statistics.groups().named().size());
    EXPECT_EQ(kTooMany - Statistics::kMostGroups, statistics.groups().rest()->everyNode.nodes);

    Statistics ofLongNames("");
    ofLongNames.add(sampleNode(std::string(201, 'n'), 5));
    EXPECT_EQ(1U, ofLongNames.all().nodes.rest()->nodes);
}

TEST(Statistics, KnowsTheTenSlowestInAnyOrder) {
    std::vector<rows::CaptureRow> rows = samples(30);
    rows[10].toFlush = rows[15].toFlush = rows[20].toFlush;  // of which the first names stay
    rows[29].toFlush.reset();
    const std::vector<std::string> expected = {"IMG_29", "IMG_28", "IMG_27", "IMG_26", "IMG_25",
                                               "IMG_24", "IMG_23", "IMG_22", "IMG_11", "IMG_16"};
    std::mt19937 random(1);
    for (int round = 0; round < 5; ++round) {
        Statistics statistics("");
        addAll(statistics, rows);
        EXPECT_EQ(expected, slowestOf(statistics));
        std::reverse(rows.begin(), rows.end());
        std::shuffle(rows.begin(), rows.begin() + (round == 0 ? 0 : 30), random);
    }
}

// Every second capture is missing, so that no gap is ever known.
TEST(Statistics, NeedsNoMoreMemoryForMoreCaptures) {
    Statistics statistics("name");
    const auto addMany = [&](int64_t first, int64_t last) {
        for (int64_t number = first; number < last; ++number) {
            statistics.add(sampleCapture(2 * number, 1 + number % 1000));
            rows::NodeRow node = sampleNode("node " + std::to_string(number), 1 + number % 1000);
            node.name = "IMG_" + std::to_string(number);
            statistics.add(node);
        }
    };
    addMany(0, 10'000);
    const long before = allocations::inUse();
    addMany(10'000, 40'000);
    EXPECT_LE(allocations::inUse(), before + 1000);  // names of the slowest may be longer
}

}  // namespace
}  // namespace stats
