// # Write a log that other programs can read
// One object of JSON on each line. Several processes may write one file, and a line is never torn.

#include <vx/vxlib4.h>

#include <fstream>
#include <iostream>
#include <string>

using namespace vx;

int main(int argc, char** argv)
{
    const std::string name = (argc > 1 ? argv[1] : ".") + std::string("/orders.log");
    const Reference<io::OutputStream> file(
        new io::FileOutputStream(String(std::string_view(name)), io::FileOutputStream::APPEND));
    const Reference<io::Writer> writer(
        new io::OutputStreamWriter(new io::EntryStream(file.get(), false), u"UTF-8", 4096));
    const Reference<log::Logger> logger(new log::Logger(u"orders"));
    logger->addProcessor(log::JsonLogWriter::create(writer.get()).get());
    logger->log(3, String::formatted(u"order {0} from \"{1}\"", 17, u"Zoë"));

    std::cout << std::ifstream(name).rdbuf();
}

/* prints
{"level":3,"text":"order 17 from \"Zoë\"","name":"orders"}
*/
