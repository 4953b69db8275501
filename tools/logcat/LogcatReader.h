// Reads logs, and shows the captures in them.

#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "CaptureBuilder.h"
#include "Finding.h"
#include "Input.h"
#include "LineScanner.h"
#include "LogLine.h"
#include "LogTime.h"
#include "View.h"

namespace logcat {

// Reads one log after the other as if they were one: a capture may go on from a file to the next.
// What is not the library's needs no memory.
class LogcatReader {
  public:
    explicit LogcatReader(view::View& view) : mView(view), mBuilder(view, mSession) {}

    // All lines were written so, not only those of a bug report, which says so itself.
    void setPrintable() { mAlwaysPrintable = true; }

    // `source` is the log's name for the user. Throws std::runtime_error with a text for the user,
    // also if no line looks like one of logcat.
    void read(Input& input, const std::string& source);

    // Hands over the captures that are left, and the session.
    void finish();

    // Whether any log that was read has a line of the library.
    bool hasMessages() const { return mHasMessages; }

  private:
    // An entry of the log, to which the next line may belong as well: each line of a message has
    // the prefix of its own.
    struct Pending {
        std::optional<LogTime> time;
        int32_t pid;
        int32_t tid;
        std::string tag;
        std::string prefix;
        std::string message;
        uint64_t firstLine;
        uint64_t lastLine;
    };
    // What is to be said of one log.
    struct About {
        bool isLogcat = false;
        bool isCaptureLog = false;
        uint64_t messages = 0;
        bool lacksYear = false;
        bool lacksZone = false;
        bool lacksFraction = false;
        bool lacksTime = false;
        bool hasOtherClock = false;
    };

    void readLine(const Line& line, LineScanner& scanner);
    bool readTitle(std::string_view text);
    void readEntry(const LogLine& line, uint64_t number, bool endsInCr, LineScanner& scanner);
    static bool goesOn(const Pending& before, const Pending& entry);
    void readChatty(const Pending& chatty);
    void addGap(const Pending& chatty, const std::string& lines);
    void addPending();
    view::Time timeOf(const std::optional<LogTime>& time);
    view::Place placeOf(uint64_t line) const;
    void addNotes(const std::string& source);

    view::View& mView;
    view::Session mSession;
    CaptureBuilder mBuilder;
    Calendar mCalendar{0};
    std::optional<Pending> mPending;
    About mAbout;
    bool mHasMessages = false;
    bool mAlwaysPrintable = false;
    bool mIsPrintable = false;
};

}  // namespace logcat
