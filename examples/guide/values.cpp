#include <vx/vxlib4.h>

#include <iostream>

using namespace vx;

int main()
{
    const String name(u"Zoë");
    const Reference<Integer32> age(new Integer32(37));
    std::cout << String::formatted(u"{0} is {1}, has {2} cats and {3} left", name, age, 2, 0.5) << '\n';

    for (const char16_t* text : {u"1200", u"99999999999", u"1,5", u"12 "}) {
        const std::optional<std::int32_t> number = Integer32::tryParse(text); // the whole text, or nothing
        std::cout << String(text) << (number ? " is a number of 32 bits\n" : " is none\n");
    }

    const math::BigDecimal net = 19.99_dec;
    math::BigDecimal gross = net + net * 0.19_dec;
    std::cout << net << " + 19 % = " << gross;
    gross.setScale(2, math::RoundingMode::HALF_EVEN);
    std::cout << ", rounded " << gross << '\n';
    std::cout << std::boolalpha << (123456789012345678901234567890_big * -2_big < 0_big) << '\n';

    const auto time = log::ZonedTimeStamp::tryParse(u"2026-11-19T02:58:01+01:00"); // RFC 3339
    if (time)
        std::cout << *time << " is " << time->getMoment() / 1000 << " seconds after 1970-01-01T00:00:00Z\n";
}
