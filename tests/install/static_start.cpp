#include <vx/vxlib4.h>

// A static library is started by its program; a shared one counts one start more. Each start wants a stop.
int main()
{
    if (VXLIBLibInit() != 0 || VXLIBLibInit() != 0)
        return 1;
    if (vx::String(u"text").getClass()->getName() == nullptr)
        return 2;
    return VXLIBLibUninit() != 0 || VXLIBLibUninit() != 0 ? 3 : 0;
}
