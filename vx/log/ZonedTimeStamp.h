#pragma once

#include "vx/log/TimeStamp.h"

#include <compare>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string_view>

namespace vx::detail {
class TextBuilder;
}

namespace vx::log {

/// A point in time as date and time of day, with the offset of that time from UTC.
struct ZonedTime {
    STRUCT_VX_TIME time;
    std::int32_t minutesAhead; ///< of UTC; negative for zones in the west

    /// Throws ResultException.
    static ZonedTime now(bool local = true);
};

/// A point in time with its offset from UTC. Immutable.
class VX_API ZonedTimeStamp : public TimeStamp {
public:
    /// The current time, local or in UTC.
    explicit ZonedTimeStamp(bool local = true);
    /// The record is not checked.
    explicit ZonedTimeStamp(const ZonedTime& time) noexcept;
    ~ZonedTimeStamp() noexcept override;

    /// Reads a time in the form of RFC 3339: "2026-11-19T02:58:01.123+01:00". The letters may be small, and a blank may
    /// stand for "T". Digits after the milliseconds are dropped. Empty for any other text, and for a date that does not
    /// exist. A leap second becomes the second before it.
    static std::optional<ZonedTimeStamp> tryParse(std::u16string_view text);

    // TimeStamp
    using TimeStamp::toString;
    /// The form of RFC 3339 with milliseconds: 2026-11-19T02:58:01.123+01:00. An offset of 0 is written as Z.
    String toString() const override;

    std::int32_t getMinutesAhead() const noexcept { return m_minutesAhead; }
    /// Milliseconds since 1970-01-01 00:00:00 UTC.
    std::int64_t getMoment() const noexcept;

    /// By the moment: 12:00+01:00 and 11:00Z are equal.
    friend bool operator==(const ZonedTimeStamp& left, const ZonedTimeStamp& right) noexcept
    {
        return left.getMoment() == right.getMoment();
    }
    friend std::weak_ordering operator<=>(const ZonedTimeStamp& left, const ZonedTimeStamp& right) noexcept
    {
        return left.getMoment() <=> right.getMoment();
    }

private:
    std::int32_t m_minutesAhead;
};

namespace detail {

/// Appends what `ZonedTimeStamp::toString` gives.
void printTime(const ZonedTime& zoned, vx::detail::TextBuilder& text);

} // namespace detail

} // namespace vx::log

template <>
struct std::hash<vx::log::ZonedTimeStamp> {
    std::size_t operator()(const vx::log::ZonedTimeStamp& value) const
    {
        return std::hash<std::int64_t>()(value.getMoment());
    }
};
