// Convert a file from one encoding to another
//
// A reader decodes the bytes of one file, a writer encodes them for another one. Both work in pieces, so the size of the file does not
// matter. `vxconv --list` prints the names of encodings.
#include <vx/vxlib4.h>

#include <iostream>

using namespace vx;

int main(int, char** argv)
{
    const String source((std::string_view(argv[1])));
    const String target = source + u".utf16";
    const Reference<io::FileOutputStream> made(new io::FileOutputStream(source, io::FileOutputStream::TRUNC));
    made->write("Gr\374\337e\n", 6); // "Grüße" in code page 1252
    made->close();

    io::InputStreamReader in(new io::FileInputStream(source), u"CP1252", 4096);
    io::OutputStreamWriter out(new io::FileOutputStream(target, io::FileOutputStream::TRUNC), u"UTF-16LE", 4096);
    char16_t piece[1024];
    for (int count = 0; (count = in.read(piece, 1024)) > 0;)
        out.write(piece, count);
    out.flush();
    out.close();

    io::BufferedReader lines(new io::InputStreamReader(new io::FileInputStream(target), u"UTF-16LE", 4096), 4096);
    for (String line; lines.readLine(line) >= 0;)
        std::cout << line << '\n';
}
// Prints:
// Grüße
