#include <vx/vxlib4.h>

#include <cstdio>

namespace {

bool works()
{
    const vx::Reference<vx::Object> object(vx::Class::forName(u"CVXString")->createInstance());
    return g_pGlobalLock != nullptr && vx::String("text", -1, u"ISO-8859-1") == u"text"
        && object->getClass()->isInstance(*object);
}

} // namespace

// A program starts and stops a static library, as often as it likes. Each start needs a stop.
int main()
{
    for (int round = 0; round < 2; ++round) {
        if (g_pGlobalLock != nullptr || VXLIBLibUninit() >= 0)
            return 1;
        if (VXLIBLibInit() != 0 || VXLIBLibInit() != 0 || !works())
            return 2;
        if (VXLIBLibUninit() != 0 || !works() || VXLIBLibUninit() != 0)
            return 3;
    }
    if (g_pGlobalLock != nullptr)
        return 4;
    std::puts("started and stopped twice");
}
