// Take only numbers that are numbers
//
// A parser that accepts "12abc" as 12 hides mistakes. These accept the whole text or nothing.
#include <vx/vxlib4.h>

#include <iostream>

using namespace vx;

int main()
{
    for (const char16_t* text : {u"8080", u"80 80", u"70000", u"-1"}) {
        const auto port = UInteger16::tryParse(text);
        std::cout << String(text) << (port ? " is a port\n" : " is none\n");
    }
    const auto price = math::BigDecimal::tryParse(u"1,50");
    std::cout << (price ? "a price\n" : "1,50 needs a point\n");
}
// Prints:
// 8080 is a port
// 80 80 is none
// 70000 is none
// -1 is none
// 1,50 needs a point
