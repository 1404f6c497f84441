#include <vx/vxlib4.h>

#include <iostream>

using namespace vx;

int main()
{
    collections::List<String> names(new collections::vorb::ArrayList, {u"Ida", u"Ole", u"Ada", u"Ole"});
    std::cout << names.getSize() << " names, Ole last at " << names.lastIndexOf(names.get(1).get()) << '\n';

    collections::Map<String, Integer32> ages(new collections::vorb::HashMap, {{u"Ida", 41}});
    ages.put(new String(u"Ole"), new Integer32(7));
    for (const auto& [name, age] : ages)
        std::cout << *name << " is " << age->toString() << '\n';

    try {
        for (const Reference<String>& name : names)
            names.remove(name.get()); // not through the iterator
    } catch (const Exception&) {
        std::cout << "The list changed under its iterator.\n";
    }

    math::BigInteger factorial(1);
    for (int i = 2; i <= 25; ++i)
        factorial.multiply(math::BigInteger(i)); // in place
    std::cout << "25! = " << factorial.toString() << '\n';
}
