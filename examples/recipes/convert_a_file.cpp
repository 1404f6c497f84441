// # Convert a file from one encoding to another
// The text goes through in pieces, so the file may have any size.
// A character that the new encoding does not have is replaced.

#include <vx/vxlib4.h>

#include <fstream>
#include <iostream>
#include <string>

using namespace vx;

int main(int argc, char** argv)
{
    const std::string folder = argc > 1 ? argv[1] : ".";
    const String from(std::string_view(folder + "/old.txt"));
    const String to(std::string_view(folder + "/new.txt"));
    std::ofstream(folder + "/old.txt") << "Gr\xFC\xDF"
                                          "e\n"; // in ISO-8859-1

    const Reference<io::Reader> in(new io::InputStreamReader(new io::FileInputStream(from), u"ISO-8859-1", 65536));
    const Reference<io::OutputStream> file(new io::FileOutputStream(to, io::FileOutputStream::TRUNC));
    const Reference<io::Writer> out(new io::OutputStreamWriter(file.get(), u"UTF-8", 65536));
    char16_t piece[4096];
    for (int count; (count = in->read(piece, 4096)) > 0;)
        out->write(piece, count);
    out->flush();

    std::cout << std::ifstream(folder + "/new.txt").rdbuf();
}

/* prints
Grüße
*/
