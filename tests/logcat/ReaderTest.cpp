// What is read of a log's lines, whatever they say.

#include "LogcatReader.h"

#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "Input.h"
#include "LineScanner.h"
#include "Logs.h"

namespace logcat {
namespace {

std::string registers(const std::string& name) {
    return "M registerSnapshotRequestRecord()register image " + name + ", queue size: 1";
}

TEST(Reader, GoesOnFromOneLogToTheNextAndSaysWhatTimesLack) {
    const std::vector<std::string> report = {
            R"(E requestInfo()submitReq { "submit-request":{"pipeline_name":"A","timestamp":"9"}})",
            "M f()flush image A  snapshotRequestInfo to infosync module"};
    const std::string other = "11-21 10:15:00.123  1500  1620 D WindowManager: relayout: 1\n";
    const Seen seen = readLogs({logOf({registers("A")}, {"threadtime"}),
                                "--------- beginning of main\n" + other,
                                logOf(report, {"threadtime", "monotonic"}, 4711),
                                logOf({"M g()unregister image A, queue size: 0"}, {"brief"})});
    ASSERT_EQ(1, seen.captures.size());
    EXPECT_EQ("1 A in 12: ", textOf(seen.captures[0]).substr(0, 11));
    EXPECT_TRUE(seen.captures[0].registered && !seen.captures[0].flushed);
    EXPECT_EQ(3, seen.captures[0].calls.back().place.source);
    EXPECT_EQ(view::Clock::kReal, seen.session.clock);
    EXPECT_EQ((std::vector<std::string>{
                      "log1: its lines have no year; the log's date gives it",
                      "log1: its lines have no time zone; what is called UTC is the phone's time",
                      "log2: there are no lines of the library",
                      "log3: some of its times are of another clock than the first, and left out",
                      "log4: some of its lines have no time"}),
              seen.session.notes);
}

TEST(Reader, TakesABugReportByItsSections) {
    constexpr int64_t kNewYear = 1767225600;
    const std::string plain = logOf({"e other", registers("a\\\\b")}, {"threadtime"}, kNewYear);
    const std::string log =
            "========================================================\n"
            "== dumpstate: 2026-03-01 10:15:00\n"
            "========================================================\n"
            "------ SYSTEM LOG (logcat -v threadtime -v printable -v uid -d *:v) ------\n" +
            logOf({registers("a\\b\t")}, {"threadtime", "printable", "uid"}, kNewYear) +
            "------ 0.1s was the duration of 'SYSTEM LOG' ------\n"
            "------ OTHER LOG (logcat -d) ------\n" +
            plain + "------ LAST LOG (logcat -v printable) ------\n";
    const Seen seen = readLogs({log, plain}, 0);
    ASSERT_EQ(3, seen.captures.size());
    EXPECT_EQ("a\\\\b", seen.captures[0].name);
    EXPECT_EQ("a\\b\t", seen.captures[1].name);
    EXPECT_EQ("a\\\\b", seen.captures[2].name);
    EXPECT_EQ(kNewYear, seen.captures[1].registered.value_or(0) / kSecond);
}

// Entries of the format long, of which the last is about the one before.
TEST(Reader, TakesCarriageReturnsAsEndsOfLines) {
    const std::vector<std::string> lines = {registers("A"), "M u()can't find imageName: B",
                                            "C uid=1 identical 2 lines"};
    for (const char* format : {"long", "threadtime"}) {
        std::string log = logOf(lines, {format});
        const std::string expected = textOf(readLogs({log}));
        EXPECT_NE(std::string::npos, expected.find("session of 4 calls")) << expected;
        for (size_t end = 0; (end = log.find('\n', end)) != std::string::npos; end += 2) {
            log.insert(end, "\r");
        }
        EXPECT_EQ(expected, textOf(readLogs({log})));
    }
}

TEST(Reader, RefusesWhatIsNoLogcat) {
    Keeper keeper;
    LogcatReader reader(keeper);
    for (const std::string& text : {std::string("{\"call\":1}\n"), std::string(3000, '\n'),
                                    std::string(size_t{1} << 21, 'x')}) {
        TextInput input(text);
        EXPECT_THROW(reader.read(input, "log"), std::runtime_error);
    }
    // A log may begin with much else.
    TextInput late(std::string(3000, '\n') + logOf({registers("A")}));
    reader.read(late, "log");
    reader.finish();
    EXPECT_EQ(3001, keeper.seen.captures.at(0).calls.at(0).place.line);
}

TEST(Reader, TakesWhatADeskPrints) {
    const std::string origin = "INFOSYNC InfoSynchronizerManager.cpp:110 r()";
    const std::string liblog = "kelo-InfoSynchronizer I 11-21 20:23:58 22092 22096 " + origin +
                               "register image A, queue size: 1\r\n";
    const std::string debug = "I " + origin + " register image B, queue size: 1\n";
    const Seen seen = readLogs({"features_mgr_handle = 0x0\n" + liblog + debug});
    ASSERT_EQ(2, seen.captures.size());
    EXPECT_EQ("A", seen.captures[0].name);
    EXPECT_EQ("22092", seen.captures[0].process);
    ASSERT_EQ(4, seen.session.notes.size());
    EXPECT_EQ("log1: its times are whole seconds", seen.session.notes[2]);
    EXPECT_EQ("", seen.captures[1].process);
}

// The lines of a text with the needle, by their numbers.
std::vector<uint64_t> scan(const std::string& text, size_t piece, std::string_view needle) {
    TextInput input(text, 0, piece);
    LineScanner scanner(input, {needle, "never"});
    std::vector<uint64_t> numbers;
    for (Line line{}; scanner.nextWithNeedle(line);) {
        EXPECT_NE(std::string_view::npos, line.text.find(needle));
        numbers.push_back(line.number);
    }
    return numbers;
}

TEST(LineScanner, FindsLinesWhereverTheInputIsDivided) {
    const std::string tooLong(LineScanner::kLongestLine + 1, 'x');
    const std::string longest = std::string(LineScanner::kLongestLine - 2, 'y') + "ab";
    std::string text = "ab\n\nxx ab\n" + tooLong + "ab\nab" + tooLong + "\nab ab\n" + longest +
                       "\n" + std::string(size_t{3} << 20, 'z') + "ab\nab";
    for (const size_t piece : {size_t{1}, size_t{4095}, size_t{1} << 20, SIZE_MAX}) {
        EXPECT_EQ((std::vector<uint64_t>{1, 3, 6, 7, 9}), scan(text, piece, "ab")) << piece;
    }
    text += '\n';
    EXPECT_EQ((std::vector<uint64_t>{1, 3, 6, 7, 9}), scan(text, SIZE_MAX, "ab"));
}

}  // namespace
}  // namespace logcat
