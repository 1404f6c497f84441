// Change a file of settings that a person wrote
//
// Comments and blanks stay where they are. After `save` the text is on the disk, or the file is as before.
#include <vx/vxlib4.h>

#include <iostream>

using namespace vx;

int main(int, char** argv)
{
    auto settings = util::IniDocument::parse("; for the printer on the first floor\n[paper]\nsize = A4\n");
    settings.set("paper", "size", "A5");
    settings.set("paper", "colour", "blue");
    throwIfFailed(settings.save(String(std::string_view(argv[1]))));
    std::cout << util::IniDocument::load(String(std::string_view(argv[1]))).getText();
}
// Prints:
// ; for the printer on the first floor
// [paper]
// size = A5
// colour = blue
