#include "LogTime.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "Cursor.h"

namespace logcat {
namespace {

constexpr int64_t kNanoseconds = 1000000000;
constexpr int64_t kSecondsPerDay = 86400;
constexpr int64_t kFirstYear = 1970;  // and the last one of which each nanosecond has a number
constexpr int64_t kLastYear = 2261;

bool takeFraction(Cursor& cursor, int64_t& nanoseconds) {
    const size_t before = cursor.rest().size();
    int64_t fraction = 0;
    if (!cursor.takeNumber(fraction, 3, 9)) {
        return false;
    }
    for (size_t digits = before - cursor.rest().size(); digits < 9; ++digits) {
        fraction *= 10;
    }
    nanoseconds += fraction;
    return true;
}

// Seconds of a phone's clock that was not set yet are few as well: no phone runs for ten years.
bool takeSeconds(Cursor& cursor, LogTime& time) {
    constexpr int64_t kTenYears = 3650 * kSecondsPerDay;
    int64_t seconds = 0;
    if (!cursor.takeNumber(seconds, 1, 10) || !cursor.take(".") ||
        seconds >= daysSince1970(kLastYear, 1, 1) * kSecondsPerDay) {
        return false;
    }
    time.kind = seconds < kTenYears ? LogTime::Kind::kMonotonic : LogTime::Kind::kEpoch;
    time.nanoseconds = seconds * kNanoseconds;
    return takeFraction(cursor, time.nanoseconds);
}

bool takeDate(Cursor& cursor, LogTime& time) {
    Cursor withYear = cursor;
    int64_t year = 0;
    if (withYear.takeNumber(year, 4, 4) && withYear.take("-") && year >= kFirstYear &&
        year <= kLastYear) {
        time.year = year;
        cursor = withYear;
    }
    return cursor.takeNumber(time.month, 2, 2) && cursor.take("-") &&
           cursor.takeNumber(time.day, 2, 2) && time.month >= 1 && time.month <= 12 &&
           time.day >= 1 && time.day <= 31;
}

bool takeTimeOfDay(Cursor& cursor, LogTime& time) {
    int64_t hours = 0;
    int64_t minutes = 0;
    int64_t seconds = 0;
    if (!cursor.takeNumber(hours, 2, 2) || !cursor.take(":") || !cursor.takeNumber(minutes, 2, 2) ||
        !cursor.take(":") || !cursor.takeNumber(seconds, 2, 2) || hours > 23 || minutes > 59 ||
        seconds > 60) {
        return false;
    }
    time.nanoseconds = (hours * 3600 + minutes * 60 + seconds) * kNanoseconds;
    time.hasFraction = cursor.take(".");
    return !time.hasFraction || takeFraction(cursor, time.nanoseconds);
}

void takeZone(Cursor& cursor, LogTime& time) {
    Cursor zone = cursor;
    const bool isEast = zone.take(" +");
    int64_t hours = 0;
    int64_t minutes = 0;
    if ((isEast || zone.take(" -")) && zone.takeNumber(hours, 2, 2) &&
        zone.takeNumber(minutes, 2, 2)) {
        time.zoneMinutes = (hours * 60 + minutes) * (isEast ? 1 : -1);
        cursor = zone;
    }
}

}  // namespace

bool takeTime(Cursor& cursor, LogTime& time) {
    Cursor attempt = cursor;
    time = LogTime{};
    attempt.takeBlanks();
    if (takeSeconds(attempt, time)) {
        cursor = attempt;
        return true;
    }
    attempt = cursor;
    time = LogTime{};
    if (!takeDate(attempt, time) || !attempt.take(" ") || !takeTimeOfDay(attempt, time)) {
        return false;
    }
    takeZone(attempt, time);
    cursor = attempt;
    return true;
}

// The years are counted from March, so that a leap day is the last of its year.
int64_t daysSince1970(int64_t year, int64_t month, int64_t day) {
    constexpr int64_t kDaysBefore1970 = 719468;  // from the first of March of year 0
    year -= month <= 2 ? 1 : 0;
    const int64_t dayOfYear = (153 * (month + (month > 2 ? -3 : 9)) + 2) / 5 + day - 1;
    return year * 365 + year / 4 - year / 100 + year / 400 + dayOfYear - kDaysBefore1970;
}

void Calendar::setDate(int64_t date) {
    mDate = std::clamp(date, int64_t{0}, daysSince1970(kLastYear, 1, 1) * kSecondsPerDay);
}

int64_t Calendar::toNanoseconds(const LogTime& time) const {
    if (time.kind != LogTime::Kind::kDate) {
        return time.nanoseconds;
    }
    const int64_t latest = mDate / kSecondsPerDay + 1;  // the phone's date may be a day further
    int64_t year = time.year.value_or(kFirstYear + mDate / (kSecondsPerDay * 365) + 1);
    while (!time.year && daysSince1970(year, time.month, time.day) > latest) {
        --year;
    }
    const int64_t days = daysSince1970(year, time.month, time.day);
    return (days * kSecondsPerDay - time.zoneMinutes.value_or(0) * 60) * kNanoseconds +
           time.nanoseconds;
}

}  // namespace logcat
