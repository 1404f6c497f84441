#pragma once

#include "vxsys/Api.h"

#include <cstdint>

/// A date and a time of day.
struct STRUCT_VX_TIME {
    std::uint16_t year;
    std::uint16_t month; ///< from 1
    std::uint16_t dayOfWeek; ///< 0 is Sunday
    std::uint16_t day; ///< from 1
    std::uint16_t hour;
    std::uint16_t minute;
    std::uint16_t second;
    std::uint16_t milliseconds;
};

static_assert(sizeof(STRUCT_VX_TIME) == 16, "a record of eight numbers of 16 bits");

/// Negative results are failures. Null arguments give RESULT_INVALID_ARGUMENT.
extern "C" {

/// The current time, local and in UTC.
VXSYS_API std::int32_t VXTimeGetLocal(STRUCT_VX_TIME* time) noexcept;
VXSYS_API std::int32_t VXTimeGetSystem(STRUCT_VX_TIME* time) noexcept;
/// The current time as local time, and how many minutes that is ahead of UTC. A zone that is not whole minutes away from
/// UTC gives the time in UTC and 0.
VXSYS_API std::int32_t VXTimeGetZoned(STRUCT_VX_TIME* time, std::int32_t* minutesAhead) noexcept;
/// How many seconds local time is ahead of UTC at a moment, given in seconds since 1970-01-01 00:00:00 UTC.
VXSYS_API std::int32_t VXTimeGetOffset(std::int64_t moment, std::int32_t* secondsAhead) noexcept;
/// `seconds` since 1970-01-01 00:00:00 UTC, as UTC.
VXSYS_API std::int32_t VXTimeFromPosix(std::int64_t seconds, STRUCT_VX_TIME* time) noexcept;

/// Writes the date and the time of day as the user's locale (LC_TIME) does, in its encoding, zero-terminated.
/// The day of the week is that of the date, whatever the record says. RESULT_INVALID_ARGUMENT for a record that is not a
/// date, RESULT_BUFFER_TOO_SMALL if the text needs more than `size` bytes.
VXSYS_API std::int32_t VXTimeFormatDate(
    const STRUCT_VX_TIME* time, std::int32_t isLong, char* target, std::int32_t size) noexcept;
VXSYS_API std::int32_t VXTimeFormatTime(const STRUCT_VX_TIME* time, char* target, std::int32_t size) noexcept;
}
