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
    const Reference<FileOutputStream> file(new FileOutputStream(path, FileOutputStream::APPEND));
    const Reference<io::Writer> writer(
        new io::OutputStreamWriter(new io::EntryStream(file.get(), false), u"UTF-8", 4096)); // one write for each entry
    // One worker keeps the order. It continues after an entry that cannot be written.
    const Reference<log::AsyncProcessor> queue = log::AsyncProcessor::create(
        log::BasicLogWriter::create(writer.get()).get(), 1, log::AsyncProcessor::Failures::KEEP_WORKER);

    const Reference<log::Logger> logger(new log::Logger(u"orders"));
    logger->enableField(u"sequence", true);
    logger->addProcessor(queue.get());
    const Reference<log::SyncLogger> shared(new log::SyncLogger(logger.get())); // for any number of threads
    shared->log(3, u"2 × coffee");
    shared->log(1, u"out of milk");
    if (!queue->waitUntilDone())
        std::cerr << "not all entries were written\n";
    file->flush(); // to the disk

    const Reference<io::BufferedReader> in(
        new io::BufferedReader(new io::InputStreamReader(new io::FileInputStream(path), u"UTF-8", 4096), 4096));
    for (String line; in->readLine(line) >= 0;)
        std::cout << line << '\n';
}
