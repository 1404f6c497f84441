#pragma once

#include "vx/Object.h"
#include "vxsys/Time.h"

#include <array>
#include <compare>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string_view>

namespace vx::log {

/// A point in time as date and time of day. Immutable.
class VX_API TimeStamp : public Object {
public:
    /// The current time, local or in UTC.
    explicit TimeStamp(bool local = true);
    /// `seconds` since 1970-01-01 00:00:00, in UTC. Throws ResultException for one beyond the year 65535.
    explicit TimeStamp(std::int32_t seconds);
    explicit TimeStamp(std::int64_t seconds);
    template <std::integral Seconds>
    requires(std::signed_integral<Seconds> || sizeof(Seconds) < sizeof(std::int64_t)) explicit TimeStamp(
        Seconds seconds)
        : TimeStamp(static_cast<std::int64_t>(seconds))
    {
    }
    /// The record is taken as it is.
    explicit TimeStamp(const STRUCT_VX_TIME& time) noexcept;
    ~TimeStamp() noexcept override;

    // Object
    /// The short form of `toString(bool)`.
    String toString() const override;

    /// Date and time of day as the user's locale writes them. Throws ResultException for a record that is not a valid
    /// date.
    virtual String toString(bool longDate) const;
    /// Decimal and sortable, as 20261119025801.123: year to second, then milliseconds.
    virtual String toLog() const;

    const STRUCT_VX_TIME& getTime() const noexcept { return m_time; }

    /// By date and time of day, without the day of the week. `equals` is that of `Object`: it compares the objects.
    friend bool operator==(const TimeStamp& left, const TimeStamp& right) noexcept
    {
        return left.getParts() == right.getParts();
    }
    friend std::strong_ordering operator<=>(const TimeStamp& left, const TimeStamp& right) noexcept
    {
        return left.getParts() <=> right.getParts();
    }

private:
    friend struct std::hash<TimeStamp>;

    /// From year to millisecond.
    std::array<std::uint16_t, 7> getParts() const noexcept
    {
        return {m_time.year, m_time.month, m_time.day, m_time.hour, m_time.minute, m_time.second, m_time.milliseconds};
    }

    STRUCT_VX_TIME m_time;
};

} // namespace vx::log

template <>
struct std::hash<vx::log::TimeStamp> {
    std::size_t operator()(const vx::log::TimeStamp& time) const noexcept
    {
        const auto parts = time.getParts();
        return std::hash<std::string_view>()({reinterpret_cast<const char*>(parts.data()), sizeof parts});
    }
};
