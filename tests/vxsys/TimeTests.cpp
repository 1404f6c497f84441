#include "vxsys/Time.h"

#include "Scratch.h"
#include "tests/Told.h"
#include "vxsys/Result.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <dlfcn.h>
#include <limits>
#include <locale.h>
#include <random>

namespace {

using namespace vxsys::results;

TEST(Time, BreaksSecondsDownAsTheCalendarDoes)
{
    std::mt19937_64 random(20261119);
    std::uniform_int_distribution<std::int64_t> anySecond(-62'300'000'000, 970'000'000'000);
    for (int round = 0; round < 20'000; ++round) {
        const std::int64_t seconds = anySecond(random);
        const std::chrono::sys_seconds moment {std::chrono::seconds(seconds)};
        const auto days = std::chrono::floor<std::chrono::days>(moment);
        const std::chrono::year_month_day date(days);
        const std::chrono::hh_mm_ss clock(moment - days);
        STRUCT_VX_TIME time;
        const std::int32_t result = VXTimeFromPosix(seconds, &time);
        EXPECT_EQ(result < 0, static_cast<int>(date.year()) < 0) << seconds;
        if (result < 0)
            continue;
        EXPECT_EQ((Told {time.year, time.month, time.day, time.dayOfWeek, time.hour, time.minute, time.second}),
            (Told {int(date.year()), unsigned(date.month()), unsigned(date.day()),
                std::chrono::weekday(days).c_encoding(), clock.hours().count(), clock.minutes().count(),
                clock.seconds().count()}))
            << seconds;
    }
    STRUCT_VX_TIME time;
    for (const std::int64_t beyond : {std::numeric_limits<std::int64_t>::min(), std::int64_t {-62'167'219'201},
             std::int64_t {2'005'949'145'600}, std::numeric_limits<std::int64_t>::max()})
        EXPECT_EQ(VXTimeFromPosix(beyond, &time), RESULT_INVALID_ARGUMENT) << beyond;
    EXPECT_EQ(VXTimeFromPosix(2'005'949'145'599, &time), RESULT_OK);
    EXPECT_EQ((Told {time.year, time.month, time.day}), (Told {65535, 12, 31}));
    EXPECT_EQ(VXTimeFromPosix(-62'167'219'200, &time), RESULT_OK);
    EXPECT_EQ((Told {time.year, time.month, time.day, time.dayOfWeek}), (Told {0, 1, 1, 6}));
}

/// The number of locales that the process has opened.
std::atomic<int> g_openedLocales {0};

TEST(Time, SeesAZoneThatChangesAtRunTime)
{
    constexpr int DAY = 24 * 60;
    const struct {
        const char* zone;
        int ahead; ///< minutes
        int toldAhead; ///< together with the time
    } rows[] = {{"UTC0", 0, 0}, {"EAST-5:30", 330, 330}, {"WEST+7", -420, -420}, {"ODD-2:00:30", 120, 0}};
    const auto minuteOf = [](const STRUCT_VX_TIME& time) { return time.hour * 60 + time.minute; };
    for (const auto& row : rows) {
        const ScopedVariable variable("TZ", row.zone);
        STRUCT_VX_TIME local, zoned, before, after;
        std::int32_t ahead = -1;
        do { // in one half of a minute
            ASSERT_EQ(VXTimeGetSystem(&before), RESULT_OK);
            ASSERT_EQ(VXTimeGetLocal(&local), RESULT_OK);
            ASSERT_EQ(VXTimeGetZoned(&zoned, &ahead), RESULT_OK);
            ASSERT_EQ(VXTimeGetSystem(&after), RESULT_OK);
        } while (before.minute != after.minute || before.second / 30 != after.second / 30);
        const int isLate = row.ahead != row.toldAhead && before.second >= 30 ? 1 : 0;
        const int minute = minuteOf(before) + DAY;
        EXPECT_EQ((Told {minuteOf(local), minuteOf(zoned), ahead}),
            (Told {(minute + row.ahead + isLate) % DAY, (minute + row.toldAhead) % DAY, row.toldAhead}))
            << row.zone;
    }
}

TEST(Time, SeesAZoneHoweverTheEnvironmentGetsIt)
{
    constexpr std::int64_t MOMENT = 1'800'000'000; // all in one second
    const ScopedVariable variable("TZ", nullptr);
    const auto ahead = [] {
        std::int32_t seconds = -1;
        EXPECT_EQ(VXTimeGetOffset(MOMENT, &seconds), RESULT_OK);
        return seconds / 60;
    };
    static char rule[] = "TZ=EAST-5:30";
    ::setenv("VX_LAST", "", 1);
    ahead();
    ::unsetenv("VX_LAST"); // the number of variables stays
    ::putenv(rule);
    EXPECT_EQ(ahead(), 330);
    rule[8] = '6';
    EXPECT_EQ(ahead(), 390);
    const std::string longRule = std::string(70, 'E') + "-7:30";
    ::setenv("TZ", longRule.c_str(), 1);
    ahead();
    ::setenv("TZ", "EAST-8:30", 1);
    EXPECT_EQ(ahead(), 510);
}

TEST(Time, OpensTheUsersLocaleOnceForEachName)
{
    const STRUCT_VX_TIME time {2026, 1, 9, 15, 13, 5, 9, 0}; // there is no such day of the week
    char text[200];
    for (const char* locale : {"C", "C.UTF-8", "no_SUCH", "C"}) {
        const ScopedVariable variable("LC_ALL", locale);
        VXTimeFormatTime(&time, text, sizeof text);
        const int before = g_openedLocales;
        for (int round = 0; round < 3; ++round) {
            EXPECT_EQ((Told {VXTimeFormatDate(&time, 0, text, sizeof text), text}), "0 01/15/26") << locale;
            EXPECT_EQ((Told {VXTimeFormatDate(&time, 1, text, sizeof text), text}), "0 Thursday, January 15, 2026");
            EXPECT_EQ((Told {VXTimeFormatTime(&time, text, sizeof text), text}), "0 13:05:09") << locale;
        }
        EXPECT_EQ(g_openedLocales, before) << locale;
    }
    EXPECT_GT(g_openedLocales, 0) << "they are counted";
}

} // namespace

/// Stands before that of the system.
extern "C" __attribute__((visibility("default"))) locale_t newlocale(
    int categories, const char* name, locale_t base) noexcept
{
    static const auto next
        = reinterpret_cast<locale_t (*)(int, const char*, locale_t)>(::dlsym(RTLD_NEXT, "newlocale"));
    ++g_openedLocales;
    return next(categories, name, base);
}
