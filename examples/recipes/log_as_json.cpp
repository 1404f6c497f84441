// Write a log that programs can read
//
// Each entry is one object of JSON on one line. The stream begins a new file when the old one has 10 MB, and keeps nine of them.
#include <vx/vxlib4.h>

#include <iostream>

using namespace vx;

int main(int, char** argv)
{
    const String path((std::string_view(argv[1])));
    const Reference<io::OutputStream> file(
        new io::RotatingFileStream(path, io::Rotation {.mostBytes = 10'000'000, .keepFiles = 9}));
    const Reference<io::Writer> writer(
        new io::OutputStreamWriter(new io::EntryStream(file.get(), false), u"UTF-8", 4096));
    const Reference<log::Logger> logger(new log::Logger(u"shop"));
    logger->addProcessor(log::JsonLogWriter::create(writer.get()).get());
    logger->log(3, u"2 × \"coffee\"");

    io::BufferedReader in(new io::InputStreamReader(new io::FileInputStream(path), u"UTF-8", 4096), 4096);
    for (String line; in.readLine(line) >= 0;)
        std::cout << line << '\n';
}
// Prints:
// {"level":3,"text":"2 × \"coffee\"","name":"shop"}
