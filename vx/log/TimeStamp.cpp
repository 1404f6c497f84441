#include "vx/log/TimeStamp.h"

#include "vx/Exception.h"
#include "vx/String.h"

#include <cstdio>

namespace vx::log {

namespace {

constexpr int TEXT_SIZE = 200;

} // namespace

TimeStamp::TimeStamp(bool local)
{
    throwIfFailed(local ? VXTimeGetLocal(&m_time) : VXTimeGetSystem(&m_time));
}

TimeStamp::TimeStamp(std::int32_t seconds)
    : TimeStamp(std::int64_t {seconds})
{
}

TimeStamp::TimeStamp(std::int64_t seconds)
{
    throwIfFailed(VXTimeFromPosix(seconds, &m_time));
}

TimeStamp::TimeStamp(const STRUCT_VX_TIME& time) noexcept
    : m_time(time)
{
}

TimeStamp::~TimeStamp() noexcept = default;

String TimeStamp::toString() const
{
    return toString(false);
}

String TimeStamp::toString(bool longDate) const
{
    char text[TEXT_SIZE];
    throwIfFailed(VXTimeFormatDate(&m_time, longDate, text, TEXT_SIZE));
    String joined(text);
    throwIfFailed(VXTimeFormatTime(&m_time, text, TEXT_SIZE));
    joined.append(u' ');
    joined.append(String(text));
    return joined;
}

String TimeStamp::toLog() const
{
    std::uint64_t number = m_time.year;
    for (const std::uint16_t part : {m_time.month, m_time.day, m_time.hour, m_time.minute, m_time.second})
        number = number * 100 + part;
    number = number * 1000 + m_time.milliseconds;

    char digits[32];
    const int length = std::snprintf(digits, sizeof digits, "%llu.%03u", static_cast<unsigned long long>(number / 1000),
        static_cast<unsigned>(number % 1000));
    char16_t wide[32];
    for (int index = 0; index < length; ++index)
        wide[index] = static_cast<char16_t>(digits[index]);
    return String(wide, length);
}

} // namespace vx::log
