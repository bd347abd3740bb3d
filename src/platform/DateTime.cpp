// SPDX-License-Identifier: Apache-2.0
// Times as ISO 8601 texts. What is written has no fraction and no offset; what is read may have both where the format
// allows it.
#include "platform/DateTime.h"

#include <date/date.h>

#include <locale>

namespace oxa::datetime {

namespace {

using std::chrono::hours;
using std::chrono::milliseconds;
using std::chrono::minutes;
using std::chrono::seconds;

// The steps below take what they read off the front of "text". date::parse is no help here: it reads "1:2:3",
// "+25:00" and years with a sign, and refuses a fraction that is finer than its result.

bool boTake(std::string_view& text, char c) {
    if (!text.starts_with(c)) return false;
    text.remove_prefix(1);
    return true;
}

bool boTakeDigit(std::string_view& text, int& iDigit) {
    if (text.empty() || text.front() < '0' || text.front() > '9') return false;
    iDigit = text.front() - '0';
    text.remove_prefix(1);
    return true;
}

// Exactly iDigits digits, and a number of at most iMax.
bool boTakeNumber(std::string_view& text, int iDigits, int iMax, int& iNumber) {
    iNumber = 0;
    for (int iDigit = 0; iDigits > 0; --iDigits) {
        if (!boTakeDigit(text, iDigit)) return false;
        iNumber = iNumber * 10 + iDigit;
    }
    return iNumber <= iMax;
}

// "2026-11-21", a day that the calendar has.
bool boTakeDate(std::string_view& text, DateTime::TimePoint& time) {
    int iYear = 0, iMonth = 0, iDay = 0;
    if (!boTakeNumber(text, 4, 9999, iYear) || !boTake(text, '-')) return false;
    if (!boTakeNumber(text, 2, 12, iMonth) || !boTake(text, '-')) return false;
    if (!boTakeNumber(text, 2, 31, iDay)) return false;
    const auto day = date::year(iYear) / iMonth / iDay;
    if (!day.ok()) return false;
    time = date::sys_days(day);
    return true;
}

// "14:03:59"
bool boTakeTime(std::string_view& text, DateTime::TimePoint& time) {
    int iHour = 0, iMinute = 0, iSecond = 0;
    if (!boTakeNumber(text, 2, 23, iHour) || !boTake(text, ':')) return false;
    if (!boTakeNumber(text, 2, 59, iMinute) || !boTake(text, ':')) return false;
    if (!boTakeNumber(text, 2, 59, iSecond)) return false;
    time += hours(iHour) + minutes(iMinute) + seconds(iSecond);
    return true;
}

// ".25", or nothing.
bool boTakeFraction(std::string_view& text, DateTime::TimePoint& time) {
    if (!boTake(text, '.') && !boTake(text, ',')) return true;
    int iDigit = 0;
    if (!boTakeDigit(text, iDigit)) return false;
    int iUnit = 100;   // milliseconds that the digit counts
    do {
        time += milliseconds(iDigit * iUnit);
        iUnit /= 10;
    } while (boTakeDigit(text, iDigit));
    return true;
}

// "Z", "+01:00", "+0100", or nothing.
bool boTakeOffset(std::string_view& text, DateTime::TimePoint& time) {
    if (text.empty() || boTake(text, 'Z')) return true;
    const bool boEast = boTake(text, '+');
    if (!boEast && !boTake(text, '-')) return false;
    int iHours = 0, iMinutes = 0;
    if (!boTakeNumber(text, 2, 23, iHours)) return false;
    static_cast<void>(boTake(text, ':'));
    if (!boTakeNumber(text, 2, 59, iMinutes)) return false;
    const minutes offset = hours(iHours) + minutes(iMinutes);
    time += boEast ? -offset : offset;
    return true;
}

}   // namespace

void DateTime::vSetNow() { m_time = std::chrono::time_point_cast<milliseconds>(std::chrono::system_clock::now()); }

std::string DateTimeFormat::toString(const DateTime& time) const {
    if (time.boIsNull()) return {};
    return date::format(std::locale::classic(), "%FT%T", date::floor<seconds>(time.time()));
}

std::optional<DateTime> DateTimeFormat::fromString(std::string_view text) const {
    DateTime::TimePoint time;
    if (!boTakeDate(text, time) || !boTake(text, 'T') || !boTakeTime(text, time)) return std::nullopt;
    if (m_format == SpecialFormat::IsoParse && !(boTakeFraction(text, time) && boTakeOffset(text, time)))
        return std::nullopt;
    if (!text.empty()) return std::nullopt;
    return DateTime(time);
}

}   // namespace oxa::datetime
