#include "LogLine.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

#include "Cursor.h"
#include "LogTime.h"

namespace logcat {
namespace {

constexpr std::string_view kTags[] = {kManagerTag, kEngineTag, kOverlapTag, kChattyTag};
constexpr std::string_view kColourEnd = "\x1b[0m";

bool takePriority(Cursor& cursor) {
    constexpr std::string_view kPriorities = "VDIWEFS";
    const std::string_view rest = cursor.rest();
    return !rest.empty() && kPriorities.find(rest[0]) != std::string_view::npos &&
           cursor.take(rest.substr(0, 1));
}

bool takeTag(Cursor& cursor, LogLine& line) {
    return std::any_of(std::begin(kTags), std::end(kTags), [&](std::string_view tag) {
        line.tag = tag;
        return cursor.take(tag);
    });
}

bool takeId(Cursor& cursor, std::optional<int32_t>& id) {
    int64_t number = 0;
    cursor.takeBlanks();
    const bool isThere = cursor.takeNumber(number, 1, 9);
    id = static_cast<int32_t>(number);
    return isThere;
}

// "uid:pid:tid" or "pid:tid", padded with blanks; without `withTid` "uid:pid" or "pid". A user is a
// number or a name.
bool readIds(std::string_view text, bool withTid, LogLine& line) {
    const size_t colons = static_cast<size_t>(std::count(text.begin(), text.end(), ':'));
    Cursor cursor(text);
    std::string_view user;
    if (colons == (withTid ? 2U : 1U)) {
        cursor.takeUpTo(":", user);
    }
    return takeId(cursor, line.pid) &&
           (!withTid || (cursor.take(":") && takeId(cursor, line.tid))) && cursor.rest().empty();
}

bool takeIds(Cursor& cursor, std::string_view end, bool withTid, LogLine& line) {
    std::string_view ids;
    return cursor.takeUpTo(end, ids) && readIds(ids, withTid, line);
}

bool takeTagEnd(Cursor& cursor) {
    cursor.takeBlanks();
    return cursor.take(": ") || (cursor.rest() == ":" && cursor.take(":"));
}

// " [USER ]PID TID P TAG: ", after a time.
bool readThreadtime(Cursor cursor, LogLine& line) {
    Cursor withUser = cursor;
    std::string_view user;
    withUser.takeBlanks();
    const bool hasUser = withUser.takeUpTo(" ", user);
    const auto readIdsAndTag = [&line](Cursor from) {
        if (!takeId(from, line.pid) || !from.take(" ") || !takeId(from, line.tid) ||
            !from.take(" ") || !takePriority(from) || !from.take(" ") || !takeTag(from, line) ||
            !takeTagEnd(from)) {
            return false;
        }
        line.message = from.rest();
        return true;
    };
    return readIdsAndTag(cursor) || (hasUser && readIdsAndTag(withUser));
}

// "P/TAG(IDS): ", with or without a time before it, and "P/TAG: ".
bool readBrief(Cursor cursor, LogLine& line) {
    if (!takePriority(cursor) || !cursor.take("/") || !takeTag(cursor, line)) {
        return false;
    }
    cursor.takeBlanks();
    if (cursor.take("(") && !takeIds(cursor, ")", false, line)) {
        return false;
    }
    const bool isRead = takeTagEnd(cursor);
    line.message = cursor.rest();
    return isRead;
}

// "P(PID) MESSAGE  (TAG)".
bool readProcess(Cursor cursor, LogLine& line) {
    if (!takePriority(cursor) || !cursor.take("(") || !takeIds(cursor, ") ", false, line)) {
        return false;
    }
    const std::string_view text = cursor.rest();
    const size_t tag = text.rfind("  (");
    Cursor ending(tag != std::string_view::npos ? text.substr(tag + 3) : "");
    if (!takeTag(ending, line)) {
        return false;
    }
    ending.takeBlanks();
    line.message = withoutColourEnd(text.substr(0, tag));
    return ending.rest() == ")";
}

// "P(PID:TID) MESSAGE".
bool readThread(Cursor cursor, LogLine& line) {
    const bool isRead =
            takePriority(cursor) && cursor.take("(") && takeIds(cursor, ") ", true, line);
    line.message = cursor.rest();
    return isRead;
}

// "[ TIME IDS P/TAG ]", without the bracket that opens it.
bool readLong(Cursor cursor, LogLine& line) {
    LogTime time;
    cursor.takeBlanks();
    if (!takeTime(cursor, time) || !cursor.take(" ")) {
        return false;
    }
    line.time = time;
    line.isLong = true;
    const std::string_view text = cursor.rest();
    const size_t slash = text.find('/');
    if (slash == std::string_view::npos || slash < 2) {
        return false;
    }
    // The letter before the slash, and the blank before that.
    Cursor priority(text.substr(slash - 1));
    if (!readIds(text.substr(0, slash - 2), true, line) || !takePriority(priority) ||
        !priority.take("/") || !takeTag(priority, line)) {
        return false;
    }
    priority.takeBlanks();
    return priority.rest() == "]";
}

// "TAG P MM-DD HH:MM:SS PID TID MESSAGE", as liblog prints without a logger.
bool readDesk(Cursor cursor, LogLine& line) {
    LogTime time;
    if (!takeTag(cursor, line) || !cursor.take(" ") || !takePriority(cursor) || !cursor.take(" ") ||
        !takeTime(cursor, time) || !cursor.take(" ") || !takeId(cursor, line.pid) ||
        !cursor.take(" ") || !takeId(cursor, line.tid) || !cursor.take(" ")) {
        return false;
    }
    line.time = time;
    line.message = cursor.rest();
    return true;
}

// "P GROUP FILE:LINE FUNCTION() MESSAGE"; what follows the priority is looked at later.
bool readDebug(Cursor cursor, LogLine& line) {
    const bool isRead = takePriority(cursor) && cursor.take(" ");
    line.message = cursor.rest();
    return isRead;
}

bool readTimed(Cursor cursor, LogLine& line) {
    LogTime time;
    if (!takeTime(cursor, time)) {
        return false;
    }
    line.time = time;
    Cursor afterBlank = cursor;
    return readThreadtime(cursor, line) || (afterBlank.take(" ") && readBrief(afterBlank, line));
}

std::string_view withoutColour(std::string_view text) {
    Cursor cursor(text);
    std::string_view number;
    if (cursor.take("\x1b[38;5;") && cursor.takeUpTo("m", number)) {
        text = cursor.rest();
    }
    return withoutColourEnd(text);
}

}  // namespace

std::string_view withoutColourEnd(std::string_view text) {
    const size_t length = text.size() - std::min(text.size(), kColourEnd.size());
    return text.substr(length) == kColourEnd ? text.substr(0, length) : text;
}

bool readLogLine(std::string_view text, LogLine& line) {
    text = withoutColour(text);
    using Reader = bool (*)(Cursor, LogLine&);
    constexpr Reader kReaders[] = {readTimed,  readBrief, readProcess,
                                   readThread, readDesk,  readDebug};
    const auto isReadBy = [&](Reader reader) {
        line = LogLine{};
        return reader(Cursor(text), line);
    };
    Cursor bracket(text);
    line = LogLine{};
    if ((bracket.take("[ ") && readLong(bracket, line)) ||
        std::any_of(std::begin(kReaders), std::end(kReaders), isReadBy)) {
        if (!line.isLong) {
            line.prefix = text.substr(0, static_cast<size_t>(line.message.data() - text.data()));
        }
        return true;
    }
    return false;
}

bool looksLikeLogcat(std::string_view text) {
    text = withoutColour(text);
    Cursor cursor(text);
    if (cursor.take("--------- ")) {
        return true;
    }
    LogTime time;
    LogLine line;
    const bool isLong = cursor.take("[ ");
    if (takeTime(cursor, time)) {
        return cursor.take(" ") &&
               cursor.rest().find(isLong ? "/" : ": ") != std::string_view::npos;
    }
    if (!takePriority(cursor)) {
        return false;
    }
    if (cursor.take("/")) {
        return cursor.rest().find(": ") != std::string_view::npos;
    }
    Cursor ofThread = cursor;
    return cursor.take("(") && ofThread.take("(") &&
           (takeIds(cursor, ") ", false, line) || takeIds(ofThread, ") ", true, line));
}

}  // namespace logcat
