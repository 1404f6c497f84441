#include <vx/vxlib4.h>

#include <iostream>

using namespace vx;
using io::FileOutputStream;

int main(int argc, char** argv)
{
    if (argc != 2) {
        std::cerr << "usage: logging FILE\n";
        return 2;
    }
    const String path((std::string_view(argv[1])));
    const Reference<io::Writer> file(
        new io::OutputStreamWriter(new FileOutputStream(path, FileOutputStream::APPEND), u"UTF-8", 4096));
    const Reference<log::AsyncProcessor> queue(
        log::AsyncProcessor::create(log::BasicLogWriter::create(file.get()).get(), 1)); // one worker keeps the order

    const Reference<log::Logger> logger(new log::Logger(u"orders"));
    logger->enableField(u"sequence", true);
    logger->addProcessor(queue.get());
    const Reference<log::SyncLogger> shared(new log::SyncLogger(logger.get())); // for any number of threads
    shared->log(3, u"2 × coffee");
    shared->log(1, u"out of milk");
    queue->waitUntilDone();

    const Reference<io::BufferedReader> in(
        new io::BufferedReader(new io::InputStreamReader(new io::FileInputStream(path), u"UTF-8", 4096), 4096));
    for (String line; in->readLine(line) >= 0;)
        std::cout << line << '\n';
}
