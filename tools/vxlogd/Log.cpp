#include "Log.h"

#include "Complaint.h"
#include "common/Failure.h"
#include "common/FileName.h"

#include <vx/Exception.h>
#include <vx/NumberBoxes.h>
#include <vx/TerminatedText.h>
#include <vx/collections/Set.h>
#include <vx/io/EntryStream.h>
#include <vx/io/FileOutputStream.h>
#include <vx/io/OutputStreamWriter.h>
#include <vx/io/RotatingFileStream.h>
#include <vx/log/BasicLogWriter.h>
#include <vx/log/JsonLogWriter.h>
#include <vx/log/LogEntry.h>
#include <vx/log/TimeStamp.h>
#include <vx/log/XmlLogWriter.h>
#include <vx/log/ZonedTimeStamp.h>

#include <atomic>
#include <filesystem>
#include <memory>
#include <new>
#include <utility>

namespace vxlogd {

namespace {

using vx::Reference;
using vx::String;
using vx::TerminatedText;
using vx::log::ILogEntry;

/// An entry that carries its receipt through the chain.
class Entry final : public vx::Object, public ILogEntry {
public:
    explicit Entry(Receipt receipt)
        : m_fields(vx::log::LogEntry::create())
        , m_receipt(std::move(receipt))
    {
    }

    VX_OBJECT_UNKNOWN(vx::Object)

    // ILogEntry
    void setField(const String& name, const vx::Object* value) override { m_fields->setField(name, value); }
    Reference<const vx::Object> getField(const String& name) const override { return m_fields->getField(name); }
    bool hasField(const String& name) const override { return m_fields->hasField(name); }
    Reference<const vx::collections::Set<String>> getFieldNames() const override { return m_fields->getFieldNames(); }

    const Receipt& getReceipt() const { return m_receipt; }

private:
    Reference<vx::log::LogEntry> m_fields;
    Receipt m_receipt;
};

/// Tells the connection at the end of a scope that its line is not in the log.
struct Refusal {
    const Receipt& receipt;
    ~Refusal() { receipt.progress->fail(receipt.bytes); }
};

/// An existing document cannot be continued: it may or may not have its end.
void moveAside(const std::string& path)
{
    std::error_code error;
    if (std::filesystem::file_size(path, error) == 0 || error)
        return;
    std::filesystem::rename(path, path + "." + vx::log::TimeStamp().toLog().toUtf8());
}

Reference<vx::io::OutputStream> openForAppend(const Settings& settings)
{
    const String name = vxtools::canonicalPath(settings.log);
    try {
        if (!rotates(settings))
            return new vx::io::FileOutputStream(name, vx::io::FileOutputStream::APPEND);
        vx::io::Rotation rotation = settings.rotation;
        rotation.onFailure = [isTold = std::make_shared<std::atomic<bool>>(false)](const vx::Exception& failure) {
            if (!isTold->exchange(true)) // the entries are in the log nevertheless
                complain("the log cannot be rotated: " + vxtools::textOf(failure));
        };
        return new vx::io::RotatingFileStream(name, std::move(rotation));
    } catch (const vx::Exception& failure) {
        throw vxtools::Failure(settings.log, vxtools::textOf(failure));
    }
}

} // namespace

LogFile::LogFile(const Settings& settings)
{
    open(settings);
}

LogFile::~LogFile() noexcept = default;

void LogFile::reopen(const Settings& settings)
{
    const std::lock_guard lock(m_lock);
    if (settings.format == Format::XML) {
        // The document has to be complete before it is moved, and it may be this very file.
        Reference<vx::log::ILogProcessor> old;
        old.swap(m_writer);
    }
    open(settings);
}

void LogFile::close()
{
    const std::lock_guard lock(m_lock);
    m_writer = nullptr;
}

void LogFile::process(const ILogEntry* entry)
{
    const Receipt& receipt = static_cast<const Entry*>(entry)->getReceipt();
    const auto fail = [&](auto&& describe) {
        // The client is told last, because it may look for the message at once. It is also told if there is no memory
        // for the message.
        const Refusal refusal {receipt};
        if (!m_isFailing.exchange(true))
            complain("the log cannot be written: " + describe());
    };
    try {
        {
            const std::lock_guard lock(m_lock);
            if (m_writer == nullptr)
                throw vx::Exception(u"it is not open");
            m_writer->process(entry);
            if (m_syncs)
                m_file->flush();
        }
        m_isFailing = false;
        receipt.progress->finish(receipt.line, receipt.bytes);
    } catch (const vx::Exception& exception) {
        fail([&] { return vxtools::textOf(exception); });
    } catch (const std::exception& exception) {
        fail([&] { return std::string(exception.what()); });
    }
}

void LogFile::open(const Settings& settings)
{
    constexpr std::int32_t BUFFER_SIZE = 64 * 1024;

    if (settings.format == Format::XML)
        moveAside(settings.log);
    const Reference<vx::io::OutputStream> file = openForAppend(settings);
    const Reference<vx::io::Writer> writer(new vx::io::OutputStreamWriter(new vx::io::EntryStream(file.get(), false),
        TerminatedText(String(std::string_view(settings.encoding))), BUFFER_SIZE));
    const Reference<vx::log::ILogProcessor> document = settings.format == Format::XML
        ? vx::log::XmlLogWriter::create(writer.get(), vx::log::XmlLogWriter::Values::ESCAPED)
        : settings.format == Format::JSON ? vx::log::JsonLogWriter::create(writer.get())
                                          : vx::log::BasicLogWriter::create(writer.get());
    try {
        writer->flush(); // so that a failed first entry does not lose the head of the document
    } catch (const vx::Exception& failure) {
        throw vxtools::Failure(settings.log, vxtools::textOf(failure));
    }
    m_writer = document;
    m_file = file;
    m_syncs = settings.sync;
}

Intake::Intake(LogFile& file, int workers)
    : m_processor(vx::log::AsyncProcessor::create(&file, workers, vx::log::AsyncProcessor::Failures::KEEP_WORKER))
{
}

void Intake::submit(const String& peer, int level, const String& text, Receipt receipt)
{
    const std::shared_ptr<Progress> progress = receipt.progress;
    const std::size_t bytes = receipt.bytes;
    progress->begin(bytes);
    try {
        const Reference<Entry> entry(new Entry(std::move(receipt)));
        const auto set = [&](const char16_t* name, const vx::Object* value) {
            entry->setField(name, Reference<const vx::Object>(value).get());
        };
        set(u"peer", new String(peer));
        set(u"level", new vx::Integer32(level));
        set(u"text", new String(text));
        set(u"timestamp", new vx::log::ZonedTimeStamp);
        const std::lock_guard lock(m_lock);
        set(u"sequence", new vx::Integer64(++m_sequence));
        m_processor->process(entry.get());
    } catch (...) {
        progress->fail(bytes);
        throw;
    }
}

} // namespace vxlogd
