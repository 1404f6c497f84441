// Decode bytes as they come
//
// A piece may end in the middle of a character.
#include <vx/vxlib4.h>

#include <iostream>

using namespace vx;

int main()
{
    text::charset::Decoder decoder(u"UTF-8");
    String text;
    for (const char* piece : {"na", "\xC3", "\xAF", "ve \xF0\x9F", "\x98\x80"})
        text += decoder.decode(piece);
    text += decoder.finish();
    std::cout << text << ", " << text.getLength() << " units\n";
}
// Prints:
// naïve 😀, 8 units
