#include "Moment.h"

#include <algorithm>
#include <charconv>
#include <chrono>
#include <ctime>

namespace vxview {

namespace {

constexpr std::int64_t SECOND = 1000, MINUTE = 60 * SECOND, HOUR = 60 * MINUTE, DAY = 24 * HOUR;

/// Reads fixed parts of a text from left to right.
class Scanner {
public:
    explicit Scanner(std::string_view text)
        : m_rest(text)
    {
    }

    /// A number of exactly `digits` digits that is not above `most`.
    int number(std::size_t digits, int least, int most)
    {
        int value = 0;
        const bool isLong = m_rest.size() >= digits;
        const char* const end = m_rest.data() + (isLong ? digits : 0);
        const auto [stop, error] = std::from_chars(m_rest.data(), end, value);
        m_isGood = m_isGood && isLong && error == std::errc() && stop == end && m_rest.front() != '-' && value >= least
            && value <= most;
        m_rest.remove_prefix(isLong ? digits : 0);
        return value;
    }

    bool take(std::string_view bytes)
    {
        if (m_rest.empty() || bytes.find(m_rest.front()) == bytes.npos)
            return false;
        m_rest.remove_prefix(1);
        return true;
    }

    void expect(std::string_view bytes) { m_isGood = take(bytes) && m_isGood; }

    /// The digits after a point as milliseconds.
    std::int64_t milliseconds()
    {
        if (!take(".,"))
            return 0;
        std::int64_t value = 0;
        std::int64_t unit = 100;
        std::size_t count = 0;
        for (; count < m_rest.size() && m_rest[count] >= '0' && m_rest[count] <= '9'; ++count, unit /= 10)
            value += unit * (m_rest[count] - '0');
        m_isGood = m_isGood && count > 0;
        m_rest.remove_prefix(count);
        return value;
    }

    bool isAtEnd() const { return m_rest.empty(); }
    bool isGood() const { return m_isGood; }
    bool startsWithDigit() const { return !m_rest.empty() && m_rest.front() >= '0' && m_rest.front() <= '9'; }

private:
    std::string_view m_rest;
    bool m_isGood = true;
};

Moment utc(int year, int month, int day)
{
    const std::chrono::year_month_day date {std::chrono::year(year),
        std::chrono::month(static_cast<unsigned int>(month)), std::chrono::day(static_cast<unsigned int>(day))};
    return std::chrono::sys_days(date).time_since_epoch().count() * DAY;
}

Moment fromLocal(std::tm& time, std::int64_t milliseconds)
{
    time.tm_isdst = -1;
    return std::mktime(&time) * SECOND + milliseconds;
}

std::tm localTime(Moment moment)
{
    const std::time_t seconds = moment / SECOND - (moment % SECOND < 0 ? 1 : 0);
    std::tm time {};
    localtime_r(&seconds, &time);
    return time;
}

/// RFC 3339; the time of day and the offset may be missing.
std::optional<Moment> numericMoment(std::string_view text, bool needsTime)
{
    Scanner scanner(text);
    const int year = scanner.number(4, 0, 9999);
    scanner.expect("-");
    const int month = scanner.number(2, 1, 12);
    scanner.expect("-");
    const int day = scanner.number(2, 1, 31);
    if (!scanner.isGood())
        return std::nullopt;
    int hour = 0;
    int minute = 0;
    int second = 0;
    std::int64_t milliseconds = 0;
    bool hasOffset = false;
    std::int64_t minutesAhead = 0;
    if (!scanner.isAtEnd()) {
        scanner.expect("Tt ");
        hour = scanner.number(2, 0, 23);
        scanner.expect(":");
        minute = scanner.number(2, 0, 59);
        if (scanner.take(":")) {
            second = scanner.number(2, 0, 60);
            milliseconds = scanner.milliseconds();
        }
        hasOffset = !scanner.isAtEnd();
        if (hasOffset && !scanner.take("Zz")) {
            const bool isWest = scanner.take("-");
            if (!isWest)
                scanner.expect("+");
            minutesAhead = scanner.number(2, 0, 23) * 60;
            scanner.expect(":");
            minutesAhead += scanner.number(2, 0, 59);
            minutesAhead = isWest ? -minutesAhead : minutesAhead;
        }
    } else if (needsTime) {
        return std::nullopt;
    }
    if (!scanner.isGood() || !scanner.isAtEnd())
        return std::nullopt;
    if (hasOffset) {
        const std::int64_t minutes = hour * 60 + minute - minutesAhead;
        return utc(year, month, day) + minutes * MINUTE + second * SECOND + milliseconds;
    }
    std::tm time {};
    time.tm_year = year - 1900;
    time.tm_mon = month - 1;
    time.tm_mday = day;
    time.tm_hour = hour;
    time.tm_min = minute;
    time.tm_sec = second;
    return fromLocal(time, milliseconds);
}

/// "10:00" or "10:00:30" on the day of `today`.
std::optional<Moment> timeOfDay(std::string_view text, std::tm today)
{
    Scanner scanner(text);
    today.tm_hour = scanner.number(2, 0, 23);
    scanner.expect(":");
    today.tm_min = scanner.number(2, 0, 59);
    today.tm_sec = scanner.take(":") ? scanner.number(2, 0, 59) : 0;
    if (!scanner.isGood() || !scanner.isAtEnd())
        return std::nullopt;
    return fromLocal(today, 0);
}

} // namespace

std::optional<Moment> momentOf(std::string_view text)
{
    if (const std::optional<Moment> moment = numericMoment(text, true))
        return moment;
    constexpr std::size_t LONGEST = 80;
    if (text.empty() || text.size() > LONGEST)
        return std::nullopt;
    std::tm time {};
    const std::string whole(text);
    const char* const end = strptime(whole.c_str(), "%x %X", &time);
    if (end == nullptr || *end != '\0')
        return std::nullopt;
    return fromLocal(time, 0);
}

std::optional<std::int64_t> durationFrom(std::string_view text)
{
    std::int64_t count = 0;
    const auto [stop, error] = std::from_chars(text.data(), text.data() + text.size(), count);
    const std::string_view unit = text.substr(static_cast<std::size_t>(stop - text.data()));
    const std::int64_t factor = unit == "s" ? SECOND
        : unit == "m"                       ? MINUTE
        : unit == "h"                       ? HOUR
        : unit == "d"                       ? DAY
                                            : 0;
    constexpr std::int64_t MOST = 1'000'000;
    if (error != std::errc() || factor == 0 || count < 0 || count > MOST)
        return std::nullopt;
    return count * factor;
}

std::optional<Moment> momentFrom(const std::string& text, Moment now)
{
    if (text == "now")
        return now;
    if (const std::optional<std::int64_t> duration = durationFrom(text))
        return now - *duration;
    if (const std::optional<Moment> moment = numericMoment(text, false))
        return moment;
    std::tm today = localTime(now);
    if (const std::optional<Moment> moment = timeOfDay(text, today))
        return moment;
    if (text != "today" && text != "yesterday")
        return std::nullopt;
    today.tm_mday -= text == "yesterday" ? 1 : 0;
    today.tm_hour = today.tm_min = today.tm_sec = 0;
    return fromLocal(today, 0);
}

Moment now()
{
    using namespace std::chrono;
    return duration_cast<milliseconds>(system_clock::now().time_since_epoch()).count();
}

std::string localText(Moment moment, std::size_t length)
{
    const std::tm time = localTime(moment);
    char text[64];
    const std::size_t written = std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%S", &time);
    return std::string(text, std::min(written, length));
}

} // namespace vxview
