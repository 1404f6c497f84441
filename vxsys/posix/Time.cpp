#include "vxsys/Time.h"

#include "vxsys/Result.h"
#include "vxsys/detail/StateLock.h"

#include <cerrno>
#include <clocale>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <initializer_list>
#include <langinfo.h>
#include <limits>
#include <locale.h>
#include <string_view>
#include <unistd.h>

namespace {

using namespace vxsys::detail;
using namespace vxsys::results;

/// Held around calls that hold a lock of the C library. It does not release these locks in a forked child process.
constinit StateLock g_clibraryLock;

std::uint16_t millisecondsOf(const timespec& moment) noexcept
{
    constexpr long NANOSECONDS_EACH = 1'000'000;
    return static_cast<std::uint16_t>(moment.tv_nsec / NANOSECONDS_EACH);
}

/// Without the milliseconds.
std::int32_t fill(const std::tm& parts, STRUCT_VX_TIME& time) noexcept
{
    constexpr int FIRST_YEAR = 1900;
    constexpr int LAST_SECOND = 59; // a leap second is shown as the second before it

    const long long year = static_cast<long long>(parts.tm_year) + FIRST_YEAR;
    if (year < 0 || year > std::numeric_limits<std::uint16_t>::max())
        return RESULT_INVALID_ARGUMENT;
    time.year = static_cast<std::uint16_t>(year);
    time.month = static_cast<std::uint16_t>(parts.tm_mon + 1);
    time.dayOfWeek = static_cast<std::uint16_t>(parts.tm_wday);
    time.day = static_cast<std::uint16_t>(parts.tm_mday);
    time.hour = static_cast<std::uint16_t>(parts.tm_hour);
    time.minute = static_cast<std::uint16_t>(parts.tm_min);
    time.second = static_cast<std::uint16_t>(parts.tm_sec < LAST_SECOND ? parts.tm_sec : LAST_SECOND);
    time.milliseconds = 0;
    return RESULT_OK;
}

/// The time zone that the environment names. A call of `getenv` reads the names of all variables, and takes longer than
/// all else that a time stamp needs.
class NamedZone {
public:
    /// Whether TZ has its value of the last `note`, or is still not set. Does not see an array that was changed by other
    /// means than those of the C library.
    bool isSame() const noexcept
    {
        if (m_variables == nullptr || m_variables != ::environ)
            return false;
        const char* const variable = m_variables[m_place];
        if (m_isSet)
            return variable != nullptr && std::strcmp(variable, m_text) == 0;
        return variable == m_last && m_variables[m_place + 1] == nullptr; // a new variable becomes the last one
    }

    void note() noexcept
    {
        constexpr std::string_view START = "TZ=";
        m_variables = nullptr;
        m_isSet = false;
        if (::environ == nullptr)
            return;
        for (std::size_t place = 0; ::environ[place] != nullptr && !m_isSet; ++place) {
            m_variables = ::environ;
            m_place = place;
            m_last = m_variables[place];
            m_isSet = std::strncmp(m_last, START.data(), START.size()) == 0;
        }
        if (!m_isSet)
            return;
        const std::size_t size = std::strlen(m_last) + 1;
        if (size <= sizeof m_text)
            std::memcpy(m_text, m_last, size);
        else
            m_variables = nullptr; // such a long rule is read at each call
    }

private:
    char** m_variables; ///< null: nothing is known
    std::size_t m_place; ///< of TZ, or of the last variable
    const char* m_last; ///< only its address is used
    bool m_isSet;
    char m_text[64];
};

/// The last second that the calling thread converted, and its zone.
struct LastSecond {
    std::time_t second;
    bool hasParts;
    std::tm parts;
    std::int32_t result; ///< negative if `time` cannot show the parts
    STRUCT_VX_TIME time; ///< without milliseconds
    NamedZone zone;
};
constinit thread_local LastSecond s_lastSecond {};

/// As `localtime_r`, which does not notice a change of the zone. The file of the zone is checked once a second, because
/// that needs a system call.
const LastSecond& localSecond(std::time_t moment) noexcept
{
    LastSecond& last = s_lastSecond;
    if (!last.hasParts || last.second != moment || !last.zone.isSame()) {
        holdDuringFork<g_clibraryLock>();
        const StateGuard guard(g_clibraryLock);
        last.zone.note();
        ::tzset();
        last.time = {};
        last.hasParts = ::localtime_r(&moment, &last.parts) != nullptr;
        last.result = last.hasParts ? fill(last.parts, last.time) : VXResultFromNative(errno);
        last.second = moment;
    }
    return last;
}

/// Not by `gmtime_r`, which holds a lock of the C library. The year begins in March here, so that the leap day is its
/// last one: H. Hinnant, "chrono-Compatible Low-Level Date Algorithms", 2013.
std::int32_t fillSystem(std::time_t moment, STRUCT_VX_TIME& time) noexcept
{
    constexpr std::int64_t FIRST = -62'167'219'200; // the years 0 to 65535
    constexpr std::int64_t END = 2'005'949'145'600;
    constexpr std::int64_t DAY = 86'400;
    constexpr std::int64_t CYCLE = 146'097; // the days of 400 years
    constexpr std::int64_t TO_MARCH = 719'468 + CYCLE; // from the first of March 400 years before the year 0
    if (moment < FIRST || moment >= END)
        return RESULT_INVALID_ARGUMENT;

    const std::int64_t second = (moment - FIRST) % DAY;
    const std::int64_t days = (moment - second) / DAY + TO_MARCH;
    const std::int64_t day = days % CYCLE;
    const std::int64_t year = (day - day / 1460 + day / 36'524 - day / 146'096) / 365;
    const std::int64_t dayOfYear = day - (365 * year + year / 4 - year / 100);
    const std::int64_t month = (5 * dayOfYear + 2) / 153; // 0 is March
    const bool isNextYear = month >= 10;
    time = {};
    time.year = static_cast<std::uint16_t>(year + (days / CYCLE - 1) * 400 + (isNextYear ? 1 : 0));
    time.month = static_cast<std::uint16_t>(isNextYear ? month - 9 : month + 3);
    time.dayOfWeek = static_cast<std::uint16_t>((days + 3) % 7);
    time.day = static_cast<std::uint16_t>(dayOfYear - (153 * month + 2) / 5 + 1);
    time.hour = static_cast<std::uint16_t>(second / 3600);
    time.minute = static_cast<std::uint16_t>(second / 60 % 60);
    time.second = static_cast<std::uint16_t>(second % 60);
    return RESULT_OK;
}

/// `fillSecond` writes everything but the milliseconds.
template <class FillSecond>
std::int32_t now(STRUCT_VX_TIME* time, FillSecond fillSecond) noexcept
{
    if (time == nullptr)
        return RESULT_INVALID_ARGUMENT;
    *time = {};
    timespec moment;
    if (::clock_gettime(CLOCK_REALTIME, &moment) != 0)
        return VXResultFromNative(errno);
    const std::int32_t result = fillSecond(moment.tv_sec, *time);
    if (result >= 0)
        time->milliseconds = millisecondsOf(moment);
    return result;
}

bool isMoment(const STRUCT_VX_TIME& time) noexcept
{
    constexpr int DAYS[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    if (time.month < 1 || time.month > 12 || time.day < 1)
        return false;
    const bool isLeap = (time.year % 4 == 0 && time.year % 100 != 0) || time.year % 400 == 0;
    return time.day <= DAYS[time.month - 1] + (time.month == 2 && isLeap) && time.hour < 24 && time.minute < 60
        && time.second < 60 && time.milliseconds < 1000;
}

/// The environment's locale for times, not the locale of the process, which may be set to anything. It is opened again
/// only after the environment has changed, because opening it takes longer than formatting a time.
class UserLocale {
public:
    constexpr UserLocale() noexcept = default;

    /// Null if memory is exhausted. Valid while the caller holds the lock.
    locale_t get() noexcept
    {
        const char* const name = nameInEnvironment();
        if (m_locale != nullptr && std::strcmp(name, m_name) == 0)
            return m_locale;
        close();
        m_locale = ::newlocale(LC_TIME_MASK, "", nullptr);
        if (m_locale == nullptr) // named, but not installed
            m_locale = ::newlocale(LC_TIME_MASK, "C", nullptr);
        keepName(name);
        return m_locale;
    }

    void close() noexcept
    {
        if (m_locale != nullptr)
            ::freelocale(m_locale);
        m_locale = nullptr;
    }

private:
    /// The first variable that is set and not empty: POSIX defines this order.
    static const char* nameInEnvironment() noexcept
    {
        for (const char* variable : {"LC_ALL", "LC_TIME", "LANG"}) {
            const char* const value = std::getenv(variable);
            if (value != nullptr && *value != '\0')
                return value;
        }
        return "";
    }

    /// A name that is too long is not stored, so its locale is opened each time.
    void keepName(const char* name) noexcept
    {
        const std::size_t length = std::strlen(name);
        std::memcpy(m_name, length < sizeof m_name ? name : "?", length < sizeof m_name ? length + 1 : 2);
    }

    locale_t m_locale = nullptr;
    char m_name[64] = "";
};

constinit UserLocale g_locale VX_GUARDED_BY(g_clibraryLock);

/// Called when the library is unloaded, and at exit.
__attribute__((destructor)) void closeLocale() noexcept
{
    const StateGuard guard(g_clibraryLock);
    g_locale.close();
}

/// The long form of a date. Its parts have the order of the locale's short form.
const char* longDateFormat(locale_t locale) noexcept
{
    const std::string_view shortForm = ::nl_langinfo_l(D_FMT, locale);
    const std::size_t day = shortForm.find_first_of("de", shortForm.find('%'));
    const std::size_t month = shortForm.find_first_of("mbBD", shortForm.find('%'));
    const std::size_t year = shortForm.find_first_of("yYF", shortForm.find('%'));
    if (year < month && year < day)
        return "%A, %Y %B %d";
    return month < day ? "%A, %B %d, %Y" : "%A, %d %B %Y";
}

std::int32_t format(
    const STRUCT_VX_TIME* time, const char* (*formatOf)(locale_t), char* target, std::int32_t size) noexcept
{
    if (target == nullptr || size < 1)
        return RESULT_INVALID_ARGUMENT;
    *target = '\0';
    if (time == nullptr || !isMoment(*time))
        return RESULT_INVALID_ARGUMENT;
    std::tm parts {};
    parts.tm_year = time->year - 1900;
    parts.tm_mon = time->month - 1;
    parts.tm_mday = time->day;
    parts.tm_hour = time->hour;
    parts.tm_min = time->minute;
    parts.tm_sec = time->second;

    holdDuringFork<g_clibraryLock>();
    const StateGuard guard(g_clibraryLock);
    ::timegm(&parts); // computes the day of the week
    const locale_t locale = g_locale.get();
    if (locale == nullptr)
        return RESULT_OUT_OF_MEMORY;
    if (::strftime_l(target, static_cast<std::size_t>(size), formatOf(locale), &parts, locale) == 0) {
        *target = '\0';
        return RESULT_BUFFER_TOO_SMALL;
    }
    return RESULT_OK;
}

} // namespace

std::int32_t VXTimeGetLocal(STRUCT_VX_TIME* time) noexcept
{
    return now(time, [](std::time_t moment, STRUCT_VX_TIME& filled) {
        const LastSecond& last = localSecond(moment);
        filled = last.time;
        return last.result;
    });
}

std::int32_t VXTimeGetZoned(STRUCT_VX_TIME* time, std::int32_t* minutesAhead) noexcept
{
    constexpr long SECONDS_EACH = 60;
    if (minutesAhead == nullptr)
        return RESULT_INVALID_ARGUMENT;
    *minutesAhead = 0;
    return now(time, [minutesAhead](std::time_t moment, STRUCT_VX_TIME& filled) {
        const LastSecond& last = localSecond(moment);
        if (!last.hasParts || last.parts.tm_gmtoff % SECONDS_EACH != 0)
            return fillSystem(moment, filled);
        *minutesAhead = static_cast<std::int32_t>(last.parts.tm_gmtoff / SECONDS_EACH);
        filled = last.time;
        return last.result;
    });
}

std::int32_t VXTimeGetOffset(std::int64_t moment, std::int32_t* secondsAhead) noexcept
{
    if (secondsAhead == nullptr)
        return RESULT_INVALID_ARGUMENT;
    *secondsAhead = 0;
    const auto native = static_cast<std::time_t>(moment);
    if (native != moment)
        return RESULT_INVALID_ARGUMENT;
    const LastSecond& last = localSecond(native);
    if (!last.hasParts)
        return RESULT_INVALID_ARGUMENT;
    *secondsAhead = static_cast<std::int32_t>(last.parts.tm_gmtoff);
    return RESULT_OK;
}

std::int32_t VXTimeGetSystem(STRUCT_VX_TIME* time) noexcept
{
    return now(time, fillSystem);
}

std::int32_t VXTimeFromPosix(std::int64_t seconds, STRUCT_VX_TIME* time) noexcept
{
    if (time == nullptr)
        return RESULT_INVALID_ARGUMENT;
    *time = {};
    const auto moment = static_cast<std::time_t>(seconds);
    return moment == seconds && fillSystem(moment, *time) >= 0 ? RESULT_OK : RESULT_INVALID_ARGUMENT;
}

std::int32_t VXTimeFormatDate(const STRUCT_VX_TIME* time, std::int32_t isLong, char* target, std::int32_t size) noexcept
{
    return isLong != 0 ? format(time, longDateFormat, target, size)
                       : format(
                           time, [](locale_t) { return "%x"; }, target, size);
}

std::int32_t VXTimeFormatTime(const STRUCT_VX_TIME* time, char* target, std::int32_t size) noexcept
{
    return format(
        time, [](locale_t) { return "%X"; }, target, size);
}
