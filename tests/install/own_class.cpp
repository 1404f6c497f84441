#include <vx/vxlib4.h>

#include <cstdio>

namespace {

class Own : public vx::Object { };

vx::Object* createOwn()
{
    return new Own;
}

} // namespace

// A program registers a class, and the library then finds it by name like its own classes.
int main()
{
    if (VXLIBLibInit() != 0)
        return 1;
    {
        const vx::ClassRegistration registration(u"user::Own", &typeid(Own), createOwn);
        const vx::Reference<vx::Object> own(vx::Class::forName(u"user::Own")->createInstance());
        if (own->getClass() != vx::Class::forType(&typeid(Own)) || !own->toString().startsWith(u"user::Own@"))
            return 2;
    }
    if (!Own().toString().startsWith(u"Object@") || VXLIBLibUninit() != 0)
        return 3;
    std::puts("known, and then no more");
}
