// # Add up money
// Decimal numbers are exact: 0.1 and 0.2 are 0.3. Rounding happens where you say, and how you say.

#include <vx/vxlib4.h>

#include <iostream>

using namespace vx;

int main()
{
    math::BigDecimal total;
    for (const math::BigDecimal& price : {19.99_dec, 0.10_dec, 0.20_dec})
        total.add(price);
    math::BigDecimal tax = total * 0.19_dec;
    tax.setScale(2, math::RoundingMode::HALF_UP);
    std::cout << total << " and " << tax << " tax\n";
}

/* prints
20.29 and 3.86 tax
*/
