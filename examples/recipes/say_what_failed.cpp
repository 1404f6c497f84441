// # Say what failed
// Exceptions know what was being done, and to what. Notes of your own come in front.

#include <vx/vxlib4.h>

#include <iostream>

using namespace vx;

int main()
{
    try {
        during(u"start the shop with", u"shop.ini", [] { throw ResultException(RESULT_ACCESS_DENIED); });
    } catch (const Exception& failure) {
        std::cout << explain(failure) << '\n';
        std::cout << (errorCodeOf(failure) == std::errc::permission_denied ? "ask your administrator\n" : "\n");
    }
}

/* prints
start the shop with shop.ini: permission denied
ask your administrator
*/
