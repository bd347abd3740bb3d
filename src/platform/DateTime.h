// SPDX-License-Identifier: Apache-2.0
/// @file
/// DateTime: points in time and their ISO 8601 texts.
///
/// For      the time stamp of a file header.
/// Not for  local time, time zones by name, calendars of other kinds.
/// Threads  plain values; no state, no locale.
#pragma once

#include <chrono>
#include <compare>
#include <optional>
#include <string>
#include <string_view>

#include "platform/Export.h"

/// Points in time, and their texts.
namespace oxa::datetime {

/// A point in time, to the millisecond, in UTC; or none at all.
class OXA_PLATFORM_API DateTime {
public:
    /// Milliseconds since 1970-01-01 00:00 UTC, leap seconds not counted.
    using TimePoint = std::chrono::sys_time<std::chrono::milliseconds>;

    DateTime() noexcept = default;
    /// That point in time.
    explicit DateTime(TimePoint time) noexcept : m_time(time) {}

    /// None at all, as by default.
    [[nodiscard]] static DateTime null() noexcept { return {}; }
    /// Whether it is no point in time.
    [[nodiscard]] bool boIsNull() const noexcept { return !m_time; }
    /// The time of the system's clock.
    void vSetNow();
    /// Only where boIsNull() is false.
    [[nodiscard]] TimePoint time() const noexcept { return *m_time; }

    /// The null time is equal to itself and before every other.
    [[nodiscard]] friend bool operator==(const DateTime&, const DateTime&) noexcept = default;
    [[nodiscard]] friend std::strong_ordering operator<=>(const DateTime& a, const DateTime& b) noexcept {
        if (!a.m_time || !b.m_time) return a.m_time.has_value() <=> b.m_time.has_value();
        return a.m_time->time_since_epoch().count() <=> b.m_time->time_since_epoch().count();
    }

private:
    std::optional<TimePoint> m_time;
};

/// Both write the same text; they differ in what they read.
enum class SpecialFormat : int {
    Iso = 0,        ///< to the second in UTC, as a STEP header carries it: "2026-11-21T14:03:59"
    IsoParse = 2,   ///< and, as other programs write, a fraction of a second, then "Z", "+01:00" or "+0100"
};

/// Between points in time and their texts in one format.
class OXA_PLATFORM_API DateTimeFormat {
public:
    /// Of that format; it decides on fromString() alone.
    explicit DateTimeFormat(SpecialFormat format) noexcept : m_format(format) {}

    /// Rounded down to the second. Empty for a null time.
    [[nodiscard]] std::string toString(const DateTime& time) const;

    /// The whole text must be one date and time of the calendar, each field with all its digits (ISO 8601-1,
    /// extended format); empty otherwise. A text without an offset is taken as UTC. A fraction may have any
    /// number of digits behind "." or ","; those behind the millisecond are dropped.
    [[nodiscard]] std::optional<DateTime> fromString(std::string_view text) const;

private:
    SpecialFormat m_format;
};

}   // namespace oxa::datetime
