// The time of a line, as the formats of logcat write it.

#pragma once

#include <cstdint>
#include <optional>

#include "Cursor.h"
#include "Finding.h"

namespace logcat {

struct LogTime {
    enum class Kind { kDate, kEpoch, kMonotonic };

    Kind kind = Kind::kDate;
    std::optional<int64_t> year;
    int64_t month = 1;
    int64_t day = 1;
    int64_t nanoseconds = 0;             // since midnight, 1970 or the phone's start
    bool hasFraction = true;             // of a second
    std::optional<int64_t> zoneMinutes;  // east of UTC
};

// "MM-DD HH:MM:SS.mmm" with what the modifiers of logcat make of it. The fraction may be absent.
bool takeTime(Cursor& cursor, LogTime& time);

// Days from 1970-01-01 to a date.
int64_t daysSince1970(int64_t year, int64_t month, int64_t day);

// Gives the dates of one log their year.
class Calendar {
  public:
    // `date` is when the log was taken, in seconds since 1970; none of its lines is later.
    explicit Calendar(int64_t date) { setDate(date); }

    void setDate(int64_t date);

    // Nanoseconds since 1970; for Kind::kMonotonic since the phone's start. A date without a year
    // is in the last one in which it is not later than the log, and one without a zone is UTC.
    int64_t toNanoseconds(const LogTime& time) const;

  private:
    int64_t mDate = 0;
};

}  // namespace logcat
