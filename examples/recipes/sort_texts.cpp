// Sort texts without regard to case
//
// `sort` is stable, and it takes anything that compares two elements.
#include <vx/vxlib4.h>

#include <iostream>

using namespace vx;

int main()
{
    collections::List<String> names(new collections::vorb::ArrayList, {u"zoë", u"Émile", u"ada", u"Ole", u"ADA"});
    names.sort([](const String& left, const String& right) { return left.compare(right, true) < 0; });
    for (const Reference<String>& name : names)
        std::cout << *name << '\n';
}
// Prints:
// ada
// ADA
// Ole
// zoë
// Émile
