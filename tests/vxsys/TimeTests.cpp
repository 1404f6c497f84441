#include "vxsys/Time.h"

#include "Scratch.h"
#include "vxsys/Result.h"

#include <gtest/gtest.h>

#include <chrono>
#include <limits>
#include <random>
#include <string>

namespace {

using namespace vxsys::results;

TEST(Time, BreaksSecondsDownAsTheCalendarDoes)
{
    std::mt19937_64 random(20261119);
    std::uniform_int_distribution<std::int64_t> anySecond(-62'000'000'000, 970'000'000'000);
    for (int round = 0; round < 20'000; ++round) {
        const std::int64_t seconds = anySecond(random);
        const std::chrono::sys_seconds moment {std::chrono::seconds(seconds)};
        const auto days = std::chrono::floor<std::chrono::days>(moment);
        const std::chrono::year_month_day date(days);
        const std::chrono::hh_mm_ss clock(moment - days);
        STRUCT_VX_TIME time;
        const std::int32_t result = VXTimeFromPosix(seconds, &time);
        if (static_cast<int>(date.year()) < 0) {
            EXPECT_LT(result, 0) << seconds;
            continue;
        }
        ASSERT_EQ(result, 0) << seconds;
        EXPECT_EQ(time.year, static_cast<int>(date.year())) << seconds;
        EXPECT_EQ(time.month, static_cast<unsigned>(date.month())) << seconds;
        EXPECT_EQ(time.day, static_cast<unsigned>(date.day())) << seconds;
        EXPECT_EQ(time.dayOfWeek, std::chrono::weekday(days).c_encoding()) << seconds;
        EXPECT_EQ(time.hour, clock.hours().count()) << seconds;
        EXPECT_EQ(time.minute, clock.minutes().count()) << seconds;
        EXPECT_EQ(time.second, clock.seconds().count()) << seconds;
    }
    STRUCT_VX_TIME time;
    for (const std::int64_t beyond : {std::numeric_limits<std::int64_t>::min(), std::int64_t {2'100'000'000'000},
             std::numeric_limits<std::int64_t>::max()})
        EXPECT_EQ(VXTimeFromPosix(beyond, &time), RESULT_INVALID_ARGUMENT) << beyond;
}

TEST(Time, TellsNowInBothForms)
{
    const auto before = std::chrono::floor<std::chrono::milliseconds>(std::chrono::system_clock::now());
    STRUCT_VX_TIME system;
    ASSERT_EQ(VXTimeGetSystem(&system), 0);
    const auto after = std::chrono::system_clock::now();
    const std::chrono::sys_days day = std::chrono::year(system.year) / system.month / system.day;
    const auto told = day + std::chrono::hours(system.hour) + std::chrono::minutes(system.minute)
        + std::chrono::seconds(system.second) + std::chrono::milliseconds(system.milliseconds);
    EXPECT_LE(before, told);
    EXPECT_LE(told, after);

    STRUCT_VX_TIME local;
    ASSERT_EQ(VXTimeGetLocal(&local), 0);
    EXPECT_LT(VXTimeGetLocal(nullptr), 0);
}

TEST(Time, IsFormattedForTheLocaleIntoEnoughRoomOnly)
{
    const ScopedVariable all("LC_ALL", "C");
    STRUCT_VX_TIME time {2026, 11, 4, 19, 2, 58, 1, 123};
    char text[200];
    EXPECT_EQ(VXTimeFormatDate(&time, 0, text, sizeof text), 0);
    EXPECT_STREQ(text, "11/19/26");
    EXPECT_EQ(VXTimeFormatDate(&time, 1, text, sizeof text), 0);
    EXPECT_STREQ(text, "Thursday, November 19, 2026");
    EXPECT_EQ(VXTimeFormatTime(&time, text, 9), 0);
    EXPECT_STREQ(text, "02:58:01");
    EXPECT_EQ(VXTimeFormatTime(&time, text, 8), RESULT_BUFFER_TOO_SMALL);
    EXPECT_STREQ(text, "");

    time.day = 31;
    EXPECT_EQ(VXTimeFormatDate(&time, 0, text, sizeof text), RESULT_INVALID_ARGUMENT) << "November has 30 days";
    EXPECT_EQ(VXTimeFormatDate(nullptr, 0, text, sizeof text), RESULT_INVALID_ARGUMENT);
    EXPECT_EQ(VXTimeFormatTime(&time, nullptr, 10), RESULT_INVALID_ARGUMENT);
    EXPECT_EQ(VXTimeFormatTime(&time, text, 0), RESULT_INVALID_ARGUMENT);
}

} // namespace
