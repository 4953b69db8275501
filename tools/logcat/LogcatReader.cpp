#include "LogcatReader.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

#include "Cursor.h"
#include "Finding.h"
#include "Input.h"
#include "LineScanner.h"
#include "LogLine.h"
#include "LogTime.h"
#include "Message.h"
#include "View.h"

namespace logcat {
namespace {

// One of these is in each line that matters. The files are for formats without a tag.
constexpr std::string_view kNeedles[] = {
        "InfoSynchronizer",        "ZuAlgoEngine",    "[EC_Overlap]", "InfoCollector.cpp:",
        "RequestRecordQueue.cpp:", "ThreadPool.cpp:", "chatty",       "------ ",
        "== dumpstate: "};

constexpr uint64_t kLookedAt = 1000;  // lines, to see whether they are of logcat
constexpr size_t kLongestEntry = size_t{1} << 14;
constexpr int64_t kMostRepeats = 1000;

bool looksLikeCaptureLog(std::string_view text) {
    return text.substr(0, 1) == "{" &&
           (text.find("\"call\":") != std::string_view::npos ||
            text.find("\"camInfosync capture log\"") != std::string_view::npos);
}

// Of the format long, up to the empty line that ends it, whose number `number` is then.
std::string readLongMessage(LineScanner& scanner, uint64_t& number, bool endsInCr) {
    std::string message;
    Line line{};
    while (message.size() < kLongestEntry && scanner.next(line)) {
        number = line.number;
        std::string_view text = line.text;
        if (endsInCr && !text.empty() && text.back() == '\r') {
            text.remove_suffix(1);
        }
        if (text.empty()) {
            break;
        }
        message += message.empty() ? "" : "\n";
        message += text.substr(0, kLongestEntry);
    }
    return std::string(withoutColourEnd(message));
}

}  // namespace

void LogcatReader::read(Input& input, const std::string& source) {
    mSession.sources.push_back(source);
    mAbout = About{};
    mCalendar.setDate(input.date());
    mIsPrintable = mAlwaysPrintable;
    LineScanner scanner(input, {std::begin(kNeedles), std::end(kNeedles)});
    Line line{};
    uint64_t looked = 0;
    while (mAbout.isLogcat || looked == kLookedAt ? scanner.nextWithNeedle(line)
                                                  : scanner.next(line)) {
        looked += looked < kLookedAt ? 1 : 0;
        mAbout.isLogcat = mAbout.isLogcat || looksLikeLogcat(line.text);
        mAbout.isCaptureLog =
                mAbout.isCaptureLog || (!mAbout.isLogcat && looksLikeCaptureLog(line.text));
        readLine(line, scanner);
    }
    addPending();
    if (!mAbout.isLogcat) {
        throw std::runtime_error(input.name() +
                                 (mAbout.isCaptureLog
                                          ? ": is a capture log, which infosync-replay plays"
                                          : ": is no logcat"));
    }
    addNotes(source);
}

void LogcatReader::readLine(const Line& line, LineScanner& scanner) {
    std::string_view text = line.text;
    const bool endsInCr = !text.empty() && text.back() == '\r';
    text.remove_suffix(endsInCr ? 1 : 0);
    LogLine read;
    if (readTitle(text)) {
        addPending();
    } else if (readLogLine(text, read)) {
        readEntry(read, line.number, endsInCr, scanner);
    }
}

// The titles of a log's parts, and what a bug report says of itself.
bool LogcatReader::readTitle(std::string_view text) {
    Cursor cursor(text);
    if (cursor.take("== dumpstate: ")) {
        LogTime time;
        mAbout.isLogcat = true;
        if (takeTime(cursor, time) && time.year) {
            mCalendar.setDate(mCalendar.toNanoseconds(time) / 1000000000);
        }
        return true;
    }
    if (cursor.take("------ ")) {
        mIsPrintable = mAlwaysPrintable || text.find("-v printable") != std::string_view::npos;
        return true;
    }
    return cursor.take("--------- ");
}

void LogcatReader::readEntry(const LogLine& line, uint64_t number, bool endsInCr,
                             LineScanner& scanner) {
    // The line's texts last until the scanner goes on.
    Pending entry{line.time,
                  line.pid.value_or(0),
                  line.tid.value_or(0),
                  std::string(line.tag),
                  std::string(line.prefix),
                  std::string(line.message),
                  number,
                  number};
    if (line.isLong) {
        entry.message = readLongMessage(scanner, entry.lastLine, endsInCr);
    }
    if (mIsPrintable) {
        entry.message = fromPrintable(entry.message);
    }
    if (entry.tag == kEngineTag) {
        mBuilder.setHasEngineTag();
    }
    if (entry.tag == kChattyTag) {
        readChatty(entry);
    } else if (entry.tag == kOverlapTag || hasOrigin(entry.tag, entry.message)) {
        addPending();
        mPending = std::move(entry);
    } else if (mPending && !line.isLong && goesOn(*mPending, entry)) {
        mPending->message += '\n' + entry.message;
        mPending->lastLine = number;
    }
}

// Whether a line without an origin belongs to the message before it. Under the tag of the
// algorithms' engine others write as well, but what the library writes there has an end.
bool LogcatReader::goesOn(const Pending& before, const Pending& entry) {
    if (entry.firstLine != before.lastLine + 1 || entry.prefix != before.prefix ||
        before.message.size() > kLongestEntry) {
        return false;
    }
    if (entry.tag != kEngineTag) {
        return true;
    }
    const std::optional<Message> message = readMessage(before.tag, before.message);
    return message && message->isCut;
}

// "uid=1000(system) Binder:1_2 expire 12 lines", or "identical" ones: those stood between the line
// before, if it is the same thread's, and one like it.
void LogcatReader::readChatty(const Pending& chatty) {
    constexpr std::string_view kIdentical = " identical ";
    const std::optional<Pending> before = mPending;
    addPending();
    const size_t expire = chatty.message.rfind(" expire ");
    const size_t identical = chatty.message.rfind(kIdentical);
    int64_t lines = 0;
    if (expire != std::string::npos) {
        addGap(chatty, chatty.message.substr(expire + 1));
    } else if (identical != std::string::npos && before && before->pid == chatty.pid &&
               before->tid == chatty.tid && before->lastLine + 1 == chatty.firstLine) {
        Cursor(std::string_view(chatty.message).substr(identical + kIdentical.size()))
                .takeNumber(lines);
        for (int64_t line = 0; line < std::min(lines, kMostRepeats); ++line) {
            mPending = before;
            mPending->time = chatty.time;
            mPending->firstLine = chatty.firstLine;
            addPending();
        }
    }
    if (lines > kMostRepeats) {
        addGap(chatty, chatty.message.substr(identical + 1));
    }
}

void LogcatReader::addGap(const Pending& chatty, const std::string& lines) {
    mBuilder.addGap(chatty.pid, "the logger has dropped lines of this process: " + lines,
                    timeOf(chatty.time), placeOf(chatty.firstLine));
}

void LogcatReader::addPending() {
    const std::optional<Pending> pending = std::exchange(mPending, std::nullopt);
    if (!pending) {
        return;
    }
    std::optional<Message> message = readMessage(pending->tag, pending->message);
    if (!message) {
        return;
    }
    ++mAbout.messages;
    mHasMessages = true;
    mAbout.isLogcat = true;
    mBuilder.add({pending->pid, pending->tid, timeOf(pending->time), placeOf(pending->firstLine),
                  std::move(*message)});
}

// All times of a session are of one clock: that of the first.
view::Time LogcatReader::timeOf(const std::optional<LogTime>& time) {
    if (!time) {
        mAbout.lacksTime = true;
        return std::nullopt;
    }
    const bool isMonotonic = time->kind == LogTime::Kind::kMonotonic;
    const view::Clock clock = isMonotonic ? view::Clock::kMonotonic : view::Clock::kReal;
    if (mSession.clock == view::Clock::kNone) {
        mSession.clock = clock;
    }
    if (mSession.clock != clock) {
        mAbout.hasOtherClock = true;
        return std::nullopt;
    }
    const bool isDate = time->kind == LogTime::Kind::kDate;
    mAbout.lacksYear = mAbout.lacksYear || (isDate && !time->year);
    mAbout.lacksZone = mAbout.lacksZone || (isDate && !time->zoneMinutes);
    mAbout.lacksFraction = mAbout.lacksFraction || !time->hasFraction;
    return mCalendar.toNanoseconds(*time);
}

view::Place LogcatReader::placeOf(uint64_t line) const {
    return {static_cast<uint32_t>(mSession.sources.size() - 1), line};
}

void LogcatReader::addNotes(const std::string& source) {
    const auto note = [&](bool isTrue, const char* text) {
        if (isTrue) {
            mSession.notes.push_back(source + ": " + text);
        }
    };
    note(mAbout.messages == 0, "there are no lines of the library");
    note(mAbout.lacksYear, "its lines have no year; the log's date gives it");
    note(mAbout.lacksZone, "its lines have no time zone; what is called UTC is the phone's time");
    note(mAbout.lacksFraction, "its times are whole seconds");
    note(mAbout.lacksTime, "some of its lines have no time");
    note(mAbout.hasOtherClock,
         "some of its times are of another clock than the first, and left out");
}

void LogcatReader::finish() {
    mBuilder.finish();
    mView.finish(mSession);
}

}  // namespace logcat
