#include "Rows.h"

#include <unistd.h>

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <type_traits>
#include <vector>

#include <gtest/gtest.h>

#include "Capture.h"
#include "Finding.h"
#include "MadeCaptures.h"
#include "NewFile.h"
#include "Row.h"
#include "RowColumns.h"
#include "RowReader.h"
#include "RowsOf.h"
#include "View.h"
#include "ViewOptions.h"

namespace view {
namespace {

namespace fs = std::filesystem;

// All that a row holds.
class Content {
  public:
    void add(const std::string& name, const std::string& value) {
        mText += name + '=' + value + '\n';
    }
    template <typename Number, std::enable_if_t<std::is_arithmetic_v<Number>, int> = 0>
    void add(const std::string& name, Number value) {
        mText += name + '=' + std::to_string(value) + '\n';
    }
    template <typename Integer>
    void add(const std::string& name, const rows::InText<Integer>& value) {
        add(name, value.value);
    }
    template <typename Value>
    void add(const std::string& name, const std::optional<Value>& value) {
        if (value) {
            add(name, *value);
        }
    }
    const std::string& text() const { return mText; }

  private:
    std::string mText;
};

template <typename Row>
std::string contentOf(const Row& row) {
    Content content;
    rows::visitColumns(row, [&](const char* name, const auto& value) { content.add(name, value); });
    return content.text();
}

template <typename Row>
std::vector<std::string> readAll(const std::string& path) {
    rows::RowReader<Row> reader(path);
    std::vector<std::string> all;
    for (Row row; reader.next(row);) {
        all.push_back(contentOf(row));
    }
    return all;
}

class RowsTest : public testing::Test {
  protected:
    void TearDown() override { fs::remove_all(mOptions.folder); }

    RowOptions mOptions{testing::TempDir() + "rows-of-" + std::to_string(getpid()),
                        {},
                        "phone \"1\"",
                        "\x1b",
                        "camera"};
};

TEST_F(RowsTest, AreReadAsTheyWereWrittenWhateverACaptureHolds) {
    const Session session = madeSession(true);
    std::vector<std::string> captures;
    std::vector<std::string> nodes;
    Rows rows(mOptions);
    RowOptions named = mOptions;
    named.runId = session.sources.front();
    for (uint64_t i = 1; i <= 1500; ++i) {
        const Capture capture = i == 1000      ? completeCapture()
                                : i % 100 == 0 ? ordinaryCapture(i)
                                               : hostileCapture(i);
        rows.add(capture, session);
        const rows::CaptureRow row = captureRowOf(capture, session, named);
        captures.push_back(contentOf(row));
        for (const rows::NodeRow& node : nodeRowsOf(capture, row)) {
            nodes.push_back(contentOf(node));
        }
    }
    EXPECT_FALSE(fs::exists(mOptions.folder + "/captures.ndjson"));
    rows.finish(session);

    const rows::RowFolder files = rows::rowFolder(mOptions.folder);
    EXPECT_EQ(readAll<rows::CaptureRow>(files.captures), captures);
    EXPECT_EQ(readAll<rows::NodeRow>(files.nodes), nodes);
    EXPECT_GT(nodes.size(), 2000U);
    rows::RunReader reader(files.run);
    rows::RunRow run;
    ASSERT_TRUE(reader.next(run));
    EXPECT_EQ(run.captures, 1500);
    EXPECT_EQ(run.nodes, static_cast<int64_t>(nodes.size()));
    EXPECT_EQ(run.switches.size(), session.switches.size());
    EXPECT_FALSE(reader.next(run));
}

TEST_F(RowsTest, LeaveNothingBehindUnlessTheyAreFinished) {
    {
        Rows rows(mOptions);
        rows.add(ordinaryCapture(1), madeSession(false));
        EXPECT_TRUE(fs::exists(mOptions.folder));
    }
    EXPECT_FALSE(fs::exists(mOptions.folder));
}

TEST_F(RowsTest, AreNotTakenForWholeIfOneFileCannotBePutInPlace) {
    Rows(mOptions).finish(madeSession(false));
    ASSERT_NO_THROW(rows::rowFolder(mOptions.folder));
    Rows rows(mOptions);
    fs::remove(mOptions.folder + "/nodes.ndjson");
    fs::create_directory(mOptions.folder + "/nodes.ndjson");
    EXPECT_THROW(rows.finish(madeSession(false)), WriteFailure);
    EXPECT_FALSE(fs::exists(mOptions.folder + "/captures.ndjson"));
    EXPECT_FALSE(fs::exists(mOptions.folder + "/run.ndjson"));
}

TEST_F(RowsTest, TellOnlyWhatIsKnown) {
    Capture capture;
    capture.number = 3;
    Node listed;
    listed.name = "beauty";
    listed.start = 0;
    listed.isListed = true;
    listed.state = "none";
    Node late = listed;
    late.name = "merge";
    late.start = 9e300;
    late.second = -1;
    late.completion = 0.0019;
    capture.nodes = {listed, late};
    capture.findings = {{FindingKind::kCutEvent, "cut", {}, {0, 4}, {}, 3},
                        {FindingKind::kNoCompletion, "late", "beauty", {0, 5}, {}, 1}};
    capture.registered = INT64_MIN;
    capture.flushed = INT64_MAX;
    capture.stages = {{{0, "0", -1}, {2, "2", -3}, {6, "6", INT64_MAX}, {12, "12", 5, false}}};
    Session session;
    session.clock = Clock::kMonotonic;
    session.toReal = -1;
    RowOptions options;
    options.runId = "r";
    const rows::CaptureRow row = captureRowOf(capture, session, options);
    EXPECT_EQ(contentOf(row),
              "run_id=r\ncapture_seq=3\nline=4\nname=\nflushed_ns=9223372036854775806\n"
              "is_flushed=0\nis_removed=0\nhas_failed=1\nfindings=4\ncalls=0\n"
              "calls_without_effect=0\nvendor_errors=0\nnode_time_outs=0\nnode_errors=0\n"
              "error_texts=0\nresults_missing=0\nno_completions=1\nfirst_finding=late\n"
              "reports=0\nerrors=late\nstages=0,2,6,12\nstage_02_us=-3000\nnode_count=2\nslowest_"
              "node=merge\n");
    const std::vector<rows::NodeRow> nodes = nodeRowsOf(capture, row);
    ASSERT_EQ(nodes.size(), 2U);
    EXPECT_EQ(contentOf(nodes[0]),
              "run_id=r\ncapture_seq=3\nname=\nnode=beauty\nis_listed=1\nhas_failed=1\n"
              "state=none\n");
    EXPECT_EQ(contentOf(nodes[1]),
              "run_id=r\ncapture_seq=3\nname=\nnode=merge\nis_listed=1\ncompletion_us=2\n"
              "timed_out=1\nhas_failed=1\nstate=none\n");
    capture.findings.pop_back();
    EXPECT_EQ(captureRowOf(capture, session, options).firstFinding, "cut");
}

}  // namespace
}  // namespace view
