#include <vx/vxlib4.h>

#include <iostream>

using namespace vx;
using namespace vx::io;

int main(int argc, char** argv)
{
    if (argc != 2) {
        std::cerr << "usage: streams FILE\n";
        return 2;
    }
    const String path((std::string_view(argv[1])));
    const Reference<FileOutputStream> file(new FileOutputStream(path, FileOutputStream::TRUNC));
    const Reference<PrintWriter> out(
        new PrintWriter(new BufferedWriter(new OutputStreamWriter(file.get(), u"UTF-16LE", 4096), 4096), false));
    out->println(u"Ένα");
    out->println(2);
    out->println(u"three");
    out->flush(); // flushes all layers; close would lose the text
    out->close();

    const Reference<BufferedReader> in(
        new BufferedReader(new InputStreamReader(new FileInputStream(path), u"UTF-16LE", 4096), 4096));
    for (String line; in->readLine(line) >= 0;)
        std::cout << line << '\n';

    try {
        const FileInputStream missing(u"C:\\no\\such\\file");
    } catch (const ResultException& failure) {
        std::cout << (failure.getResult() == RESULT_NOT_FOUND ? "not found" : "another failure") << '\n';
    }
}
