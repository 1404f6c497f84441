#include "vx/log/ZonedTimeStamp.h"

#include "vx/Exception.h"
#include "vx/String.h"
#include "vx/detail/TextBuilder.h"

#include <algorithm>
#include <chrono>
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

constexpr std::u16string_view DIGITS = u"0123456789";

/// Removes a number of `digits` digits from the beginning of `text`.
bool takeNumber(std::u16string_view& text, std::size_t digits, unsigned& number)
{
    constexpr unsigned TEN = 10;
    if (text.size() < digits || text.substr(0, digits).find_first_not_of(DIGITS) != text.npos)
        return false;
    number = 0;
    for (const char16_t unit : text.substr(0, digits))
        number = number * TEN + (unit - u'0');
    text.remove_prefix(digits);
    return true;
}

/// Removes the first unit if it is one of `accepted`.
bool takeUnit(std::u16string_view& text, std::u16string_view accepted)
{
    if (text.empty() || accepted.find(text.front()) == accepted.npos)
        return false;
    text.remove_prefix(1);
    return true;
}

/// A point and at least one digit, or nothing.
bool takeMilliseconds(std::u16string_view& text, unsigned& milliseconds)
{
    constexpr std::size_t KEPT = 3;
    if (!takeUnit(text, u"."))
        return true;
    const std::size_t count = std::min(text.find_first_not_of(DIGITS), text.size());
    std::u16string kept(text.substr(0, std::min(count, KEPT)));
    kept.resize(KEPT, u'0');
    text.remove_prefix(count);
    std::u16string_view digits = kept;
    return count > 0 && takeNumber(digits, KEPT, milliseconds);
}

bool takeOffset(std::u16string_view& text, std::int32_t& minutesAhead)
{
    if (takeUnit(text, u"Zz"))
        return true;
    const std::int32_t direction = text.starts_with(u'-') ? -1 : 1;
    unsigned hours = 0;
    unsigned minutes = 0;
    if (!takeUnit(text, u"+-") || !takeNumber(text, 2, hours) || !takeUnit(text, u":") || !takeNumber(text, 2, minutes)
        || hours > 23 || minutes > 59)
        return false;
    minutesAhead = direction * static_cast<std::int32_t>(hours * 60 + minutes);
    return true;
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

std::optional<ZonedTimeStamp> ZonedTimeStamp::tryParse(std::u16string_view text)
{
    using namespace std::chrono;

    unsigned parts[6] = {}; // year to second
    constexpr std::u16string_view AFTER[] = {u"-", u"-", u"Tt ", u":", u":"};
    for (std::size_t index = 0; index < std::size(parts); ++index) {
        if (!takeNumber(text, index == 0 ? 4 : 2, parts[index])
            || (index < std::size(AFTER) && !takeUnit(text, AFTER[index])))
            return std::nullopt;
    }
    unsigned milliseconds = 0;
    ZonedTime zoned {};
    const auto [year, month, day, hour, minute, second] = parts;
    const year_month_day date {
        std::chrono::year(static_cast<int>(year)), std::chrono::month(month), std::chrono::day(day)};
    if (!takeMilliseconds(text, milliseconds) || !takeOffset(text, zoned.minutesAhead) || !text.empty() || !date.ok()
        || hour > 23 || minute > 59 || second > 60)
        return std::nullopt;
    const unsigned dayOfWeek = weekday(sys_days(date)).c_encoding();
    const auto narrow = [](unsigned number) { return static_cast<std::uint16_t>(number); };
    zoned.time = {narrow(year), narrow(month), narrow(dayOfWeek), narrow(day), narrow(hour), narrow(minute),
        narrow(std::min(second, 59U)), narrow(milliseconds)};
    return ZonedTimeStamp(zoned);
}

String ZonedTimeStamp::toString() const
{
    vx::detail::ShortTextBuilder<64> text;
    detail::printTime({getTime(), m_minutesAhead}, text);
    return text.toString();
}

std::int64_t ZonedTimeStamp::getMoment() const noexcept
{
    // Years from March on: the leap day is the last day of a year. 400 years more, so that none is negative.
    constexpr std::int64_t DAYS_TO_1970 = 719'468 + 146'097;
    const STRUCT_VX_TIME& time = getTime();
    const std::int64_t month = (time.month + 9) % 12;
    const std::int64_t year = time.year + 400 - (time.month < 3 ? 1 : 0);
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
