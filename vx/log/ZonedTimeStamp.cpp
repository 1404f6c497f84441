#include "vx/log/ZonedTimeStamp.h"

#include "vx/Exception.h"
#include "vx/String.h"
#include "vx/detail/TextBuilder.h"

#include <cstddef>
#include <cstdlib>
#include <iterator>
#include <limits>

namespace vx::log {

namespace {

/// Appends a number with zeros before it, so that it has at least `digits` digits.
void appendDigits(vx::detail::TextBuilder& text, unsigned number, std::size_t digits)
{
    constexpr unsigned TEN = 10;
    char16_t units[std::numeric_limits<unsigned>::digits10 + 1];
    std::size_t place = std::size(units);
    do {
        units[--place] = static_cast<char16_t>(u'0' + number % TEN);
        number /= TEN;
    } while (place > 0 && (number != 0 || std::size(units) - place < digits));
    text.append({units + place, std::size(units) - place});
}

} // namespace

ZonedTime ZonedTime::now(bool local)
{
    ZonedTime now {};
    throwIfFailed(local ? VXTimeGetZoned(&now.time, &now.minutesAhead) : VXTimeGetSystem(&now.time));
    return now;
}

ZonedTimeStamp::ZonedTimeStamp(bool local)
    : ZonedTimeStamp(ZonedTime::now(local))
{
}

ZonedTimeStamp::ZonedTimeStamp(const ZonedTime& time) noexcept
    : TimeStamp(time.time)
    , m_minutesAhead(time.minutesAhead)
{
}

ZonedTimeStamp::~ZonedTimeStamp() noexcept = default;

String ZonedTimeStamp::toString() const
{
    vx::detail::ShortTextBuilder<64> text;
    detail::printTime({getTime(), m_minutesAhead}, text);
    return text.toString();
}

std::int64_t ZonedTimeStamp::getMoment() const noexcept
{
    // Years from March on: the leap day is the last day of a year.
    constexpr std::int64_t DAYS_TO_1970 = 719'468;
    const STRUCT_VX_TIME& time = getTime();
    const std::int64_t month = (time.month + 9) % 12;
    const std::int64_t year = time.year - (time.month < 3 ? 1 : 0);
    const std::int64_t days
        = 365 * year + year / 4 - year / 100 + year / 400 + (306 * month + 5) / 10 + time.day - 1 - DAYS_TO_1970;
    const std::int64_t minutes = (days * 24 + time.hour) * 60 + time.minute - m_minutesAhead;
    return (minutes * 60 + time.second) * 1000 + time.milliseconds;
}

namespace detail {

void printTime(const ZonedTime& zoned, vx::detail::TextBuilder& text)
{
    constexpr int MINUTES_EACH = 60;
    const STRUCT_VX_TIME& time = zoned.time;
    const struct {
        unsigned number;
        char16_t before;
        std::size_t digits;
    } parts[] = {{time.month, u'-', 2}, {time.day, u'-', 2}, {time.hour, u'T', 2}, {time.minute, u':', 2},
        {time.second, u':', 2}, {time.milliseconds, u'.', 3}};
    appendDigits(text, time.year, 4);
    for (const auto& part : parts) {
        text.append(part.before);
        appendDigits(text, part.number, part.digits);
    }
    if (zoned.minutesAhead == 0)
        return text.append(u'Z');
    const auto distance = static_cast<unsigned>(std::abs(zoned.minutesAhead));
    text.append(zoned.minutesAhead < 0 ? u'-' : u'+');
    appendDigits(text, distance / MINUTES_EACH, 2);
    text.append(u':');
    appendDigits(text, distance % MINUTES_EACH, 2);
}

} // namespace detail

} // namespace vx::log
