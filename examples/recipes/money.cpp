// Read an amount of money and add the tax
//
// A decimal number is exact. The rounding mode is chosen where digits are removed.
#include <vx/vxlib4.h>

#include <iostream>

using namespace vx;

int main()
{
    const auto net = math::BigDecimal::tryParse(u"1034.95"); // the whole text, or nothing
    if (!net)
        return 1;
    math::BigDecimal gross = *net + *net * 0.19_dec;
    std::cout << gross << '\n';
    gross.setScale(2, math::RoundingMode::HALF_EVEN);
    std::cout << gross << '\n';
}
// Prints:
// 1231.5905
// 1231.59
