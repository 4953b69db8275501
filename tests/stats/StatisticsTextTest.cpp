#include "StatisticsText.h"

#include <cstdint>
#include <string>

#include <gtest/gtest.h>

#include "RequestRecord.h"
#include "Row.h"
#include "SampleRows.h"
#include "StageNames.h"
#include "Statistics.h"
#include "StatisticsJson.h"

namespace stats {
namespace {

// Those of mode 1 are slower, and the last has failed.
std::string textOf(int64_t captures, const char* by, size_t width) {
    Statistics statistics(by);
    for (int64_t i = 1; i <= captures; ++i) {
        rows::CaptureRow row = sampleCapture(i, 1000 * i);
        row.camMode = i > captures - 6 ? 1 : 0;
        row.stages[1] = 12'000;
        row.nodeErrors = i / captures;
        row.callsWithoutEffect = i > captures - 2 ? 1 : 0;
        row.hasFailed = i == captures;
        row.slowestNode = "merge";
        row.slowestNodeTook = 100 * i;
        statistics.add(row);
        rows::NodeRow node = sampleNode("merge\n", 100 * i);
        node.camMode = row.camMode;
        node.timedOut = i == captures;
        statistics.add(node);
    }
    return statisticsText(statistics, {width, false, false});
}

std::string between(const std::string& text, const std::string& from, const std::string& to) {
    const size_t begin = text.find(from);
    return text.substr(begin, text.find(to) - begin);
}

TEST(StatisticsText, ShowsATableOfEach) {
    EXPECT_EQ(
            "captures\n"
            "  number                     100\n"
            "  failed                     1 (1.00 %)\n"
            "    node_error               1\n"
            "  with calls without effect  2\n"
            "\n"
            "times, ms\n"
            "  time                              number  min   p50   p90   p95   p99  max\n"
            "  shot to shot, from registrations      99    1     1     1     1          1\n"
            "  registration to flush                100    1  49.9  89.6  94.7  98.8  100\n"
            "  2request_to_vendor                   100   12    12    12    12    12   12\n"
            "\n"
            "nodes, ms\n"
            "  node     nodes  failed  time-outs  number  min   p50   p90   p95   p99  max\n"
            "  merge\\n    100       0          1     100  0.1  5.02  9.02  9.54  9.92   10\n"
            "\n"
            "slowest captures\n"
            "  capture  flush ms  slowest   ms  failed  run\n"
            "  IMG_100       100  merge     10     yes  run\n"
            "  IMG_99         99  merge    9.9          run\n"
            "  IMG_98         98  merge    9.8          run\n"
            "  IMG_97         97  merge    9.7          run\n"
            "  IMG_96         96  merge    9.6          run\n"
            "  IMG_95         95  merge    9.5          run\n"
            "  IMG_94         94  merge    9.4          run\n"
            "  IMG_93         93  merge    9.3          run\n"
            "  IMG_92         92  merge    9.2          run\n"
            "  IMG_91         91  merge    9.1          run\n",
            textOf(100, "", 100));
}

TEST(StatisticsText, ShowsGroupsUnderEachOther) {
    EXPECT_EQ(
            "by cam_mode, ms from registration to flush\n"
            "  cam_mode  captures  failed    share  number  min   p50  p90   p95  max\n"
            "  (all)           20       1   5.00 %      20    1    10   18  19.1   20\n"
            "  0               14       0   0.00 %      14    1  7.01   13         14\n"
            "  1                6       1  16.67 %       6   15    17   20         20\n"
            "\n"
            "times, ms\n"
            "  time                              cam_mode  number  min   p50  p90   p95  max\n"
            "  shot to shot, from registrations  (all)         19    1     1    1          1\n"
            "  shot to shot, from registrations  0             13    1     1    1          1\n"
            "  shot to shot, from registrations  1              6    1     1    1          1\n"
            "  registration to flush             (all)         20    1    10   18  19.1   20\n"
            "  registration to flush             0             14    1  7.01   13         14\n"
            "  registration to flush             1              6   15    17   20         20\n"
            "  2request_to_vendor                (all)         20   12    12   12    12   12\n"
            "  2request_to_vendor                0             14   12    12   12         12\n"
            "  2request_to_vendor                1              6   12    12   12         12\n"
            "\n"
            "nodes, ms\n"
            "  node     cam_mode  nodes  failed  time-outs  number  min  p50  p90  p95  max\n"
            "  merge\\n  (all)        20       0          1      20  0.1    1  1.8  1.9    2\n"
            "  merge\\n  0            14       0          0      14  0.1  0.7  1.3       1.4\n"
            "  merge\\n  1             6       0          1       6  1.5  1.7    2         2\n"
            "\n",
            between(textOf(20, "cam_mode", 100), "by", "slowest"));
    EXPECT_EQ(
            "by node, ms that nodes took\n"
            "  node     nodes  failed   share  time-outs  number  min  ..\n"
            "  (all)       20       0  0.00 %          1      20  0.1  ..\n"
            "  merge\\n     20       0  0.00 %          1      20  0.1  ..\n"
            "\n",
            between(textOf(20, "node", 60), "by", "times"));
}

TEST(StatisticsText, ShowsTheRestOfTooManyNamesAsOthers) {
    Statistics statistics("node");
    for (size_t i = 0; i < Figures::kMostNodes + 3; ++i) {
        statistics.add(sampleNode(std::to_string(i), 5));
    }
    const std::string text = statisticsText(statistics, {100, false, false});
    EXPECT_NE(std::string::npos, between(text, "by", "nodes,").find("\n  (others)     53 "));
    EXPECT_NE(std::string::npos, text.substr(text.find("nodes,")).find("\n  (others)      3 "));
}

TEST(StatisticsText, DoesNotDivideWhatTheColumnCannot) {
    const std::string all = textOf(20, "", 100);
    const std::string byNode = textOf(20, "node", 100);
    EXPECT_EQ(between(all, "times", "slowest"), between(byNode, "times", "slowest"));
    const std::string byCaptures = textOf(20, "is_flushed", 100);
    EXPECT_EQ(between(all, "nodes,", "slowest"), between(byCaptures, "nodes,", "slowest"));
    EXPECT_NE(between(all, "times", "nodes,"), between(byCaptures, "times", "nodes,"));
}

TEST(StatisticsText, ShowsTheStagesByTheLibrarysNames) {
    for (size_t i = 0; i < kStageNames.size(); ++i) {
        EXPECT_STREQ(camInfosync::TimeStageToChar[i], kStageNames[i]);
    }
}

}  // namespace
}  // namespace stats
