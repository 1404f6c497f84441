#include <vx/vxlib4.h>

#include <filesystem>
#include <iostream>

using namespace vx;

int main(int argc, char** argv)
{
    if (argc != 2) {
        std::cerr << "usage: service_log FILE\n";
        return 2;
    }
    io::Rotation rotation {.mostBytes = 1000, .every = io::Rotation::Every::DAY, .keepFiles = 7};
    rotation.onFailure = [](const Exception& failure) { std::cerr << explain(failure) << '\n'; };
    const Reference<io::OutputStream> file(
        new io::RotatingFileStream(String(std::string_view(argv[1])), std::move(rotation)));
    const Reference<io::Writer> writer(
        new io::OutputStreamWriter(new io::EntryStream(file.get(), false), u"UTF-8", 4096));

    log::AsyncOptions options;
    options.mostEntries = 10'000;
    options.whenFull = log::WhenFull::DROP_NEWEST; // the service never waits for its log
    options.tries = 5; // a full disk may have room again soon
    options.onFailure = [](const log::ILogEntry&, const std::exception_ptr& failure) {
        std::cerr << "lost: " << describe(failure) << '\n';
    };
    const Reference<log::AsyncProcessor> queue
        = log::AsyncProcessor::create(log::JsonLogWriter::create(writer.get()).get(), options);
    const Reference<log::LogFilter> filter = log::LogFilter::create(queue.get());
    filter->setLevels(0, 3); // can be changed while the service runs

    const Reference<log::Logger> logger(new log::Logger(u"orders"));
    logger->setTimes(log::Logger::Times::RFC_3339);
    logger->enableField(u"timestamp", true);
    logger->addProcessor(filter.get());
    for (int order = 0; order < 20; ++order) {
        logger->log(3, String::formatted(u"order {0} \"accepted\"", order));
        logger->log(7, u"a detail that the filter holds back");
    }
    queue->waitUntilDone();

    const log::AsyncCounts counts = queue->getCounts();
    std::cout << counts.processed << " written, " << counts.dropped << " dropped, " << counts.failed << " failed\n";
    std::cout << std::boolalpha << std::filesystem::exists(std::string(argv[1]) + ".000001") << '\n';
}
