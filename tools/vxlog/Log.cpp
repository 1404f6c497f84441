#include "Log.h"

#include "Ending.h"
#include "Lines.h"
#include "Sending.h"
#include "Target.h"
#include "Texts.h"
#include "common/Failure.h"
#include "common/FileName.h"
#include "common/Input.h"
#include "common/Program.h"

#include <vx/Exceptions.h>
#include <vx/io/EntryStream.h>
#include <vx/io/FileOutputStream.h>
#include <vx/io/OutputStreamWriter.h>
#include <vx/io/RotatingFileStream.h>
#include <vx/log/AsyncProcessor.h>
#include <vx/log/BasicLogWriter.h>
#include <vx/log/JsonLogWriter.h>
#include <vx/log/Logger.h>
#include <vx/log/MultiProcessor.h>
#include <vx/log/XmlLogWriter.h>

#include <atomic>
#include <memory>

namespace vxlog {

using namespace vx;
using namespace vxtools;

namespace {

/// A rotation that fails is told once: the entries are in the file nevertheless.
io::Rotation rotationOf(const Options& options)
{
    io::Rotation rotation = options.rotation;
    rotation.onFailure = [isTold = std::make_shared<std::atomic<bool>>(false)](const Exception& failure) {
        if (!isTold->exchange(true))
            complain("vxlog", textOf(failure));
    };
    return rotation;
}

/// The destination of the log.
Reference<io::OutputStream> openLog(const Options& options)
{
    constexpr std::uint32_t STANDARD_OUTPUT = 1;
    if (options.file == "-")
        return new io::FileOutputStream(STANDARD_OUTPUT, false);

    const String path = canonicalPath(options.file);
    if (options.mode)
        makeFile(options.file, *options.mode);
    Reference<io::FileOutputStream> file;
    std::int64_t size = 0;
    try {
        if (rotates(options))
            return new io::RotatingFileStream(path, rotationOf(options));
        file = new io::FileOutputStream(path, io::FileOutputStream::APPEND);
        size = file->getSize();
    } catch (const Exception& failure) {
        throw Failure(options.file, textOf(failure));
    }
    if (options.format == Options::Format::XML && size > 0)
        throw Failure(options.file, NOT_CONTINUED());
    return file;
}

Reference<log::ILogProcessor> createWriter(const Options& options, const Text& name, io::OutputStream* file)
{
    const Reference<io::Writer> writer(
        new io::OutputStreamWriter(new io::EntryStream(file, false), u"UTF-8", BLOCK_SIZE));
    if (options.format == Options::Format::PLAIN)
        return log::BasicLogWriter::create(writer.get());
    if (options.format == Options::Format::JSON)
        return log::JsonLogWriter::create(writer.get());
    using Values = log::XmlLogWriter::Values;
    const Reference<log::ILogProcessor> document
        = log::XmlLogWriter::create(writer.get(), options.escape ? Values::ESCAPED : Values::AS_THEY_ARE);
    try {
        writer->flush(); // so that a failed first entry does not lose the head of the document
    } catch (const Exception& thrown) {
        throw Failure(name, textOf(thrown));
    }
    return document;
}

Reference<log::Logger> createLogger(const Options& options)
{
    const Reference<log::Logger> logger
        = options.name ? log::Logger::create(String(*options.name)) : log::Logger::create();
    logger->setTimes(options.times);
    if (options.fields) {
        for (const char16_t* field : {u"level", u"text", u"name"})
            logger->enableField(field, false);
        for (const std::string& field : *options.fields)
            logger->enableField(String(field), true);
    }
    return logger;
}

} // namespace

void log(const Options& options, Messages& messages)
{
    const Input input(options.input);
    if (options.to) {
        sendLines(options, input, messages);
        return;
    }
    Lines lines(options, input);
    catchEndingSignals();
    if (options.file == "-")
        requireStream(1);
    const Text name = options.file == "-" ? STANDARD_OUTPUT() : Text(options.file);
    const Reference<io::OutputStream> file = openLog(options);
    const Reference<Target> target(new Target(createWriter(options, name, file.get())));
    const Reference<log::Logger> logger = createLogger(options);
    Reference<log::AsyncProcessor> queue;
    if (options.workers > 0) {
        constexpr std::int64_t MOST_WAITING = 32 * 1024 * 1024; // of an input that is faster than the log
        queue = log::AsyncProcessor::create(
            target.get(), log::AsyncOptions {.threads = options.workers, .mostBytes = MOST_WAITING});
    }
    logger->addProcessor(queue != nullptr ? static_cast<log::ILogProcessor*>(queue.get()) : target.get());

    std::exception_ptr failure; // of the input: what was read before is still written
    try {
        for (Line line; !target->hasFailed() && lines.next(line);)
            logger->log(line.level, line.text);
    } catch (const Failure&) {
        failure = std::current_exception();
    }
    if (queue != nullptr)
        queue->waitUntilDone();
    target->close();
    target->check(name);
    try {
        file->flush();
    } catch (const Exception& thrown) {
        throw Failure(name, textOf(thrown));
    }
    if (failure != nullptr)
        std::rethrow_exception(failure);
}

} // namespace vxlog
