#include "vx/vxlib4.h"

#include <gtest/gtest.h>

#include <arpa/inet.h>
#include <limits>
#include <unordered_set>
#include <vector>

namespace vx {
namespace {

/// Rows of equal values, from the least up.
template <class Value>
void expectOrder(const std::vector<std::vector<Value>>& rows)
{
    for (std::size_t left = 0; left < rows.size(); ++left) {
        for (std::size_t right = 0; right < rows.size(); ++right) {
            for (const Value& a : rows[left]) {
                for (const Value& b : rows[right]) {
                    EXPECT_TRUE((a <=> b) == (left <=> right)) << left << ' ' << right;
                    EXPECT_EQ(a == b, left == right) << left << ' ' << right;
                    EXPECT_TRUE(left != right || std::hash<Value>()(a) == std::hash<Value>()(b)) << left;
                }
            }
        }
        EXPECT_NE(std::hash<Value>()(rows[left].front()), std::hash<Value>()(rows[(left + 1) % rows.size()].front()));
    }
}

net::Inet6Address six(const char* text, std::uint32_t scope, unsigned short port = 0)
{
    vx_sockaddr_union address {};
    address.in6.sin6_family = AF_INET6;
    address.in6.sin6_port = port;
    address.in6.sin6_scope_id = scope;
    ::inet_pton(AF_INET6, text, &address.in6.sin6_addr);
    return {&address, nullptr};
}

TEST(Values, AreOrderedAndHashed)
{
    expectOrder<Integer32>({{Integer32(std::numeric_limits<std::int32_t>::min())}, {Integer32(-1), Integer32(-1)},
        {Integer32(std::numeric_limits<std::int32_t>::max())}}); // `compareTo` wraps around
    expectOrder<UInteger8>({{UInteger8(1)}, {UInteger8(200), UInteger8(200)}});
    expectOrder<Double>({{Double(-7.5)}, {Double(0.0), Double(-0.0)}, {Double(0.5)}, {Double(3.5)}});
    expectOrder<net::URI>({{net::URI(u"http://a/b?c=1")}, {net::URI(u"http://a/b?d=1"), net::URI(u"http://a/b?d=1")},
        {net::URI(u"http://b")}});
    expectOrder<util::FilePath>(
        {{util::FilePath(u"C:\\A")}, {util::FilePath(u"C:\\a\\b"), util::FilePath(u"C:/a/./b")}});
    expectOrder<log::TimeStamp>({{log::TimeStamp({2026, 9, 0, 30, 23, 59, 59, 999})},
        {log::TimeStamp({2026, 10, 0, 1, 0, 0, 0, 0}), log::TimeStamp({2026, 10, 4, 1, 0, 0, 0, 0})}});
    const auto zoned = [](std::uint16_t day, std::uint16_t hour, int minutesAhead) {
        return log::ZonedTimeStamp(log::ZonedTime {{2024, 2, 0, day, hour, 30, 0, 0}, minutesAhead});
    };
    expectOrder<log::ZonedTimeStamp>({{zoned(28, 23, 0)}, {zoned(29, 0, 0), zoned(28, 23, -60), zoned(29, 5, 300)}});
    expectOrder<net::Inet6Address>(
        {{six("fe80::1", 2), six("fe80::1", 2, 80)}, {six("fe80::2", 2)}, {six("ff02::1", 0)}});
    EXPECT_TRUE(six("fe80::1", 2) < six("fe80::1", 3)) << "the links of two interfaces";
    EXPECT_EQ(testing::PrintToString(six("2001:db8::1", 0)), "2001:db8::1");
    expectOrder<Integer64>({{Integer64(0)}, {Integer64(std::int64_t {1} << 32)}});
    expectOrder<math::BigInteger>({{-(1_big)}, {math::BigInteger(), -math::BigInteger()}, {4294967296_big},
        {18446744073709551616_big}, {36893488147419103232_big}});
    expectOrder<math::BigDecimal>({{math::BigDecimal()}, {0.1_dec}, {0.25_dec, math::BigDecimal(250_big, 3)}});
    EXPECT_EQ(std::unordered_set<Integer32>({Integer32(1), Integer32(2), Integer32(1)}).size(), 2U);
}

#if defined(__cpp_lib_format)
TEST(Values, AreFormatted)
{
    EXPECT_EQ(
        std::format("{:>3}|{}|{}|{}", Integer32(-5), String(u"ß"), math::BigDecimal(String(u"0.50")), net::URI(u"a:b")),
        " -5|ß|0.5|a:b");
    EXPECT_EQ(std::format("{}", ResultException(RESULT_NOT_FOUND, u"open x")),
        "vx::ResultException: open x: no such file or directory (0x80070002)");
}
#endif

TEST(ZonedTimeStamp, KnowsItsMoment)
{
    for (const std::int64_t seconds : {0LL, 951'782'399LL, 951'782'400LL, 1'709'164'800LL, -1LL, 4'107'542'399LL}) {
        const log::ZonedTimeStamp stamp({log::TimeStamp(seconds).getTime(), 0});
        EXPECT_EQ(stamp.getMoment(), seconds * 1000);
    }
    const auto first = log::ZonedTimeStamp::tryParse(u"0000-01-01T00:00:00Z");
    EXPECT_EQ(first->getMoment(), -62'167'219'200'000) << "of std::chrono";
}

} // namespace
} // namespace vx
