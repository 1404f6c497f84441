#include <vx/vxlib4.h>

#include <iostream>

using namespace vx;

int main()
{
    String text(u"Zürich, 8001");
    const String shared(String::AcquireShare, text); // no copy: both count one buffer
    text.toUpper(); // writes, and so copies first
    std::cout << shared << " -> " << text << '\n';

    const int comma = text.indexOf(u',');
    std::cout << text.substring(0, comma) << '|' << text.substring(comma + 2) << '\n';

    text.format(u"{1} of {0}", -1, u"three", u"two");
    std::cout << text << '\n';

    const std::string utf8 = shared.toUtf8(); // and back: String takes std::string_view as UTF-8
    std::cout << std::boolalpha << (String(std::string_view(utf8)) == shared) << '\n';

    char bytes[16];
    const std::int32_t size = shared.getBytes(bytes, sizeof bytes, u"CP1252"); // the terminator is counted
    std::cout << size - 1 << " bytes, " << utf8.size() << " in UTF-8\n";
    std::cout << (String(bytes, -1, u"CP1252") == shared) << '\n';
}
