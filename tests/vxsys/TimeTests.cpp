#include "vxsys/Time.h"

#include "vxsys/Result.h"

#include <gtest/gtest.h>

#include <chrono>
#include <limits>
#include <random>
#include <tuple>

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
        EXPECT_EQ(result < 0, static_cast<int>(date.year()) < 0) << seconds;
        if (result < 0)
            continue;
        EXPECT_EQ(std::tuple(time.year, time.month, time.day, time.dayOfWeek, time.hour, time.minute, time.second),
            std::tuple(static_cast<int>(date.year()), static_cast<unsigned>(date.month()),
                static_cast<unsigned>(date.day()), std::chrono::weekday(days).c_encoding(), clock.hours().count(),
                clock.minutes().count(), clock.seconds().count()))
            << seconds;
    }
    STRUCT_VX_TIME time;
    for (const std::int64_t beyond : {std::numeric_limits<std::int64_t>::min(), std::int64_t {2'100'000'000'000},
             std::numeric_limits<std::int64_t>::max()})
        EXPECT_EQ(VXTimeFromPosix(beyond, &time), RESULT_INVALID_ARGUMENT) << beyond;
}

} // namespace
