// Lines as the platform's formatter writes them.

#include "LogLine.h"

#include <stdlib.h>  // setenv
#include <time.h>    // tzset

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "Cursor.h"
#include "LogTime.h"
#include "Logs.h"
#include "Message.h"

namespace logcat {
namespace {

constexpr int64_t kZoneSeconds = 5 * 3600 + 1800;  // India's
constexpr int64_t kNewYear = 1767225600;           // 2026, UTC
constexpr int64_t kAt = (kNewYear + 3661) * kSecond + 123456789;

struct Expected {
    bool time;
    bool pid;
    bool tid;
    bool tag;
};

// What a modifier leaves of the time above, in a zone east of UTC.
struct Modifier {
    const char* name;
    int64_t at;
};

void check(const std::string& format, const Expected& expected, const Modifier& modifier,
           bool withUser) {
    std::vector<std::string> formats = {format, modifier.name};
    if (withUser) {
        formats.emplace_back("uid");
    }
    const LogEntry entry{std::string(kEngineTag), "INFOSYNC a: b (c)", kAt, 321, 98765};
    std::string text = formatted(formats, entry);
    SCOPED_TRACE(text);
    EXPECT_TRUE(looksLikeLogcat(text.substr(0, text.find('\n'))));
    LogLine line;
    ASSERT_TRUE(readLogLine(std::string_view(text).substr(0, text.find('\n')), line));
    EXPECT_EQ(expected.tag ? kEngineTag : "", line.tag);
    EXPECT_EQ(expected.pid ? std::optional<int32_t>(321) : std::nullopt, line.pid);
    EXPECT_EQ(expected.tid ? std::optional<int32_t>(98765) : std::nullopt, line.tid);
    EXPECT_EQ(line.isLong ? "" : entry.message, line.message);
    ASSERT_EQ(expected.time, line.time.has_value());
    if (line.time) {
        EXPECT_EQ(modifier.at, Calendar(kNewYear).toNanoseconds(*line.time));
    }
}

TEST(LogLine, IsReadInEachFormatWithEachModifier) {
    setenv("TZ", "IST-5:30", 1);
    tzset();
    constexpr int64_t kSecondOfIt = kAt / kSecond * kSecond;
    constexpr int64_t kLocal = kSecondOfIt + kZoneSeconds * kSecond;
    const Modifier modifiers[] = {
            {"year", kLocal + 123000000},       {"zone", kSecondOfIt + 123000000},
            {"epoch", kSecondOfIt + 123000000}, {"usec", kLocal + 123456000},
            {"nsec", kLocal + 123456789},       {"color", kLocal + 123000000},
            {"printable", kLocal + 123000000},
    };
    const std::pair<const char*, Expected> formats[] = {
            {"threadtime", {true, true, true, true}}, {"time", {true, true, false, true}},
            {"long", {true, true, true, true}},       {"brief", {false, true, false, true}},
            {"tag", {false, false, false, true}},     {"process", {false, true, false, true}},
            {"thread", {false, true, true, false}},
    };
    for (const auto& [format, expected] : formats) {
        for (const Modifier& modifier : modifiers) {
            check(format, expected, modifier, false);
            check(format, expected, modifier, true);
        }
    }
    unsetenv("TZ");
    tzset();
}

TEST(LogLine, HasMonotonicTimesAsSecondsThatAreTooFewForADate) {
    const LogEntry entry{std::string(kEngineTag), "m", 4711 * kSecond + 5000000};
    LogLine line;
    ASSERT_TRUE(readLogLine(formatted({"threadtime", "monotonic"}, entry), line));
    const LogTime time = line.time.value_or(LogTime{});
    EXPECT_EQ(LogTime::Kind::kMonotonic, time.kind);
    EXPECT_EQ(4711 * kSecond + 5000000, Calendar(0).toNanoseconds(time));
}

TEST(LogLine, OfOtherTagsAndOtherTextsIsPassedOver) {
    LogLine line;
    for (const char* text :
         {"", "[ ", "I", "I/ZuAlgoEngine", "I/ZuAlgoEngineX( 1): m",
          "11-21 10:15:00.123 1 2 I X: m", "11-21 25:15:00.123 1 2 I ZuAlgoEngine: m",
          "13-21 10:15:00.123 1 2 I ZuAlgoEngine: m",
          "1969-11-21 10:15:00.123 1 2 I ZuAlgoEngine: m", "I(12) m  (X)",
          "ZuAlgoEngine I 11-21"}) {
        EXPECT_FALSE(readLogLine(text, line)) << text;
    }
    for (const char* text : {"", "{\"call\":1}", "total 12", "Internal: no", "11-21 hello: all"}) {
        EXPECT_FALSE(looksLikeLogcat(text)) << text;
    }
}

TEST(LogLine, HasATagThatIsFilledUpWithBlanks) {
    LogLine line;
    const LogEntry entry{std::string(kChattyTag), "expire 1 line"};
    ASSERT_TRUE(readLogLine(formatted({"brief"}, entry), line));
    EXPECT_EQ(kChattyTag, line.tag);
}

TEST(LogTime, MayHaveALeapSecondAndAZoneToTheWest) {
    Cursor cursor("2025-12-31 20:29:60.000 -0330");
    LogTime time;
    ASSERT_TRUE(takeTime(cursor, time));
    EXPECT_EQ(kNewYear * kSecond, Calendar(kNewYear).toNanoseconds(time));
}

TEST(Calendar, TakesTheLastYearInWhichADateIsNotAfterTheLog) {
    LogTime december{};
    december.month = 12;
    december.day = 31;
    LogTime january{};
    const int64_t day = 86400;
    // The phone's date may be a day further than that of the log.
    for (const int64_t taken :
         {kNewYear - 3600, kNewYear, kNewYear + 200 * day, kNewYear + 300 * day}) {
        EXPECT_EQ((kNewYear - day) * kSecond, Calendar(taken).toNanoseconds(december)) << taken;
        EXPECT_EQ(kNewYear * kSecond, Calendar(taken).toNanoseconds(january)) << taken;
    }
    EXPECT_EQ(0, Calendar(-400 * day).toNanoseconds(january));
}

TEST(Printable, GivesTheBytesBackThatTheFormatterEscaped) {
    std::string bytes;
    for (int byte = 1; byte < 256; ++byte) {
        if (byte != '\n') {
            bytes += static_cast<char>(byte);
        }
    }
    bytes += "\\x41\\\\101 9";
    const std::string text = formatted({"brief", "printable"}, {std::string(kEngineTag), bytes});
    LogLine line;
    ASSERT_TRUE(readLogLine(std::string_view(text).substr(0, text.find('\n')), line));
    EXPECT_EQ(bytes, fromPrintable(line.message));
    EXPECT_EQ("\x01\x21\x41\\", fromPrintable("\\1\\41\\101\\"));  // as older loggers write them
}

TEST(SubmitEvent, IsCutUnlessItsEndIsTheLast) {
    const std::string event = R"({ "submit-request":{"pipeline_name":"A","timestamp":"9"}})";
    EXPECT_FALSE(readSubmitEvent(event).isCut);
    EXPECT_TRUE(readSubmitEvent(event + "\nother").isCut);
}

}  // namespace
}  // namespace logcat
