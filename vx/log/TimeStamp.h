#pragma once

#include "vx/Object.h"
#include "vxsys/Time.h"

#include <concepts>
#include <cstdint>

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

private:
    STRUCT_VX_TIME m_time;
};

} // namespace vx::log
