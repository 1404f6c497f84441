#include "Log.h"

#include "Complaint.h"
#include "common/Failure.h"
#include "common/FileName.h"

#include <vx/Exception.h>
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

#include <chrono>
#include <exception>
#include <filesystem>
#include <new>
#include <utility>

namespace vxlogd {

using vx::Reference;
using vx::String;
using vx::TerminatedText;
using vx::log::ILogEntry;

/// An entry that carries its receipt through the chain.
class Entry final : public vx::log::LogEntry {
public:
    explicit Entry(Receipt receipt)
        : m_receipt(std::move(receipt))
    {
    }

    const Receipt& getReceipt() const { return m_receipt; }

private:
    Receipt m_receipt;
};

/// Collects the text of entries.
class Block final : public vx::io::OutputStream {
public:
    const std::vector<signed char>& get() const { return m_bytes; }
    std::size_t getSize() const { return m_bytes.size(); }
    void cut(std::size_t size) { m_bytes.resize(size); }

    // OutputStream
    using OutputStream::write;
    void write(const signed char* bytes, std::int32_t length) override
    {
        m_bytes.insert(m_bytes.end(), bytes, bytes + length);
    }
    void flush() override { }
    void close() override { }

private:
    std::vector<signed char> m_bytes;
};

namespace {

constexpr std::size_t BLOCK_SIZE = 64 * 1024;

/// How many bytes are collected before they are written. A rotated log gets its entries one by one if a block might
/// be larger than the file may become.
std::size_t blockSize(const Settings& settings)
{
    constexpr std::int64_t GROWTH = 8; // from bytes of a line to bytes of an entry
    const std::int64_t most = settings.rotation.mostBytes;
    const auto longest = GROWTH * static_cast<std::int64_t>(settings.maxLine);
    return most == 0 || most >= static_cast<std::int64_t>(BLOCK_SIZE) + longest ? BLOCK_SIZE : 1;
}

/// Calls `work`. Returns why it failed; empty if it did not.
template <class Work>
std::string reasonOf(Work&& work)
{
    try {
        work();
        return {};
    } catch (const vx::Exception& failure) {
        return vxtools::textOf(failure);
    } catch (const std::exception& failure) {
        return failure.what();
    }
}

/// There may be no memory for the message.
void report(const char* what, const std::string& reason = {}) noexcept
{
    try {
        complain(what + reason);
    } catch (const std::bad_alloc&) {
    }
}

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

LogFile::LogFile(const Settings& settings, std::function<void()> onChange)
    : m_onChange(std::move(onChange))
{
    m_backlog.setLimit(settings.backlog);
    open(settings);
}

LogFile::~LogFile() noexcept = default;

void LogFile::reopen(const Settings& settings)
{
    const Lock lock(m_lock);
    if (settings.format == Format::XML || m_settings.format == Format::XML)
        endDocument(); // it has to be complete before it is moved, and it may be this very file
    open(settings);
    m_backlog.setLimit(settings.backlog);
    m_changed.notify_all();
}

void LogFile::giveUp()
{
    const Lock lock(m_lock);
    m_hasGivenUp = true;
    m_changed.notify_all();
}

void LogFile::close()
{
    const Lock lock(m_lock);
    endDocument();
}

void LogFile::expect(const Receipt& receipt)
{
    m_backlog.add(receipt.bytes);
    ++m_expected;
}

void LogFile::cancel(const Receipt& receipt)
{
    release(receipt);
    const std::lock_guard turn(m_turn);
    Lock lock(m_lock);
    if (--m_expected == 0)
        write(lock);
}

void LogFile::process(const ILogEntry* entry)
{
    const std::lock_guard turn(m_turn);
    Lock lock(m_lock);
    print(Reference<const Entry>(static_cast<const Entry*>(entry)));
    if (--m_expected == 0 || m_block->getSize() >= blockSize(m_settings))
        write(lock); // otherwise the next entry comes soon
}

std::shared_ptr<const std::string> LogFile::getTrouble() const
{
    const std::lock_guard lock(m_troubleLock);
    return m_trouble;
}

std::string LogFile::getPath() const
{
    const Lock lock(m_lock);
    return m_settings.log;
}

void LogFile::open(const Settings& settings)
{
    constexpr std::int32_t BUFFER_SIZE = 64 * 1024;

    if (settings.format == Format::XML)
        moveAside(settings.log);
    const Reference<vx::io::OutputStream> file = openForAppend(settings);
    const Reference<Block> block(new Block);
    const Reference<vx::io::Writer> writer(new vx::io::OutputStreamWriter(new vx::io::EntryStream(block.get()),
        TerminatedText(String(std::string_view(settings.encoding))), BUFFER_SIZE));
    const Reference<vx::log::ILogProcessor> document = settings.format == Format::XML
        ? vx::log::XmlLogWriter::create(writer.get(), vx::log::XmlLogWriter::Values::ESCAPED)
        : settings.format == Format::JSON ? vx::log::JsonLogWriter::create(writer.get())
                                          : vx::log::BasicLogWriter::create(writer.get());
    try {
        writer->flush(); // the head of a document
        if (block->getSize() > 0)
            file->write(block->get().data(), static_cast<std::int32_t>(block->getSize()));
    } catch (const vx::Exception& failure) {
        throw vxtools::Failure(settings.log, vxtools::textOf(failure));
    }
    block->cut(0);
    m_settings = settings;
    m_file = file;
    m_block = block;
    m_writer = document;
    for (const Reference<const Entry>& entry : std::exchange(m_entries, {}))
        print(entry); // again, because the new file may have another format
}

/// Leaves the entries of the block for the next file.
void LogFile::endDocument()
{
    if (m_writer == nullptr)
        return;
    const std::string reason = reasonOf([&] {
        m_block->cut(0);
        m_writer = nullptr; // prints the end of a document
        putOnFile();
        if (m_settings.sync)
            m_file->flush();
    });
    if (!reason.empty())
        report("the end of the log cannot be written: ", reason);
    m_block->cut(0);
    m_file = nullptr;
}

/// Adds the entry to the block.
void LogFile::print(const Reference<const Entry>& entry)
{
    const std::size_t size = m_block->getSize();
    const std::string reason = reasonOf([&] {
        m_entries.push_back(entry);
        if (m_writer == nullptr)
            return; // `open` will print it
        try {
            m_writer->process(entry.get());
        } catch (...) {
            m_block->cut(size);
            m_entries.pop_back();
            throw;
        }
    });
    if (!reason.empty())
        refuse(entry->getReceipt(), reason);
}

/// Returns when all entries are in the file, or are lost because of `giveUp`.
void LogFile::write(Lock& lock)
{
    constexpr std::chrono::milliseconds PAUSE(250);

    while (!m_entries.empty()) {
        const std::string reason = reasonOf([&] {
            if (m_writer == nullptr)
                open(m_settings);
            putOnFile();
        });
        if (reason.empty())
            break;
        if (m_hasGivenUp)
            return refuseAll(reason);
        static_cast<void>(reasonOf([&] { beginTrouble(reason); })); // without memory, after the next try
        m_changed.wait_for(lock, PAUSE);
    }
    endTrouble();
    const std::string reason = reasonOf([&] {
        if (m_settings.sync && !m_entries.empty())
            m_file->flush();
    });
    if (reason.empty())
        finishAll();
    else
        refuseAll(reason); // whether they are on the disk is unknown, and the next flush would not tell
}

void LogFile::putOnFile()
{
    if (m_block->getSize() > 0)
        m_file->write(m_block->get().data(), static_cast<std::int32_t>(m_block->getSize()));
    m_block->cut(0);
}

void LogFile::finishAll()
{
    m_written += m_entries.size();
    {
        Tail::Batch batch(m_tail);
        for (const Reference<const Entry>& entry : m_entries)
            batch.add(*entry);
    }
    if (!m_entries.empty())
        m_isLosing = false;
    for (const Reference<const Entry>& entry : m_entries) {
        const Receipt& receipt = entry->getReceipt();
        release(receipt);
        try {
            receipt.progress->finish(receipt.line, receipt.bytes);
        } catch (const std::exception&) { // no memory: the client will not hear that the line is in the log
            receipt.progress->fail(receipt.bytes);
        }
    }
    m_entries.clear();
}

void LogFile::refuseAll(const std::string& reason)
{
    for (const Reference<const Entry>& entry : m_entries)
        refuse(entry->getReceipt(), reason);
    m_entries.clear();
    m_block->cut(0);
}

/// The client is told last, because it may look for the message at once.
void LogFile::refuse(const Receipt& receipt, const std::string& reason)
{
    ++m_lost;
    release(receipt);
    if (!m_isLosing.exchange(true))
        report("a line cannot be written to the log: ", reason);
    receipt.progress->fail(receipt.bytes);
}

void LogFile::release(const Receipt& receipt)
{
    if (m_backlog.remove(receipt.bytes))
        m_onChange();
}

void LogFile::beginTrouble(const std::string& reason)
{
    {
        const std::lock_guard lock(m_troubleLock);
        if (m_trouble != nullptr)
            return;
        m_trouble = std::make_shared<const std::string>(reason);
    }
    report("the log cannot be written: ", reason);
    m_onChange();
}

void LogFile::endTrouble()
{
    {
        const std::lock_guard lock(m_troubleLock);
        if (m_trouble == nullptr)
            return;
        m_trouble = nullptr;
    }
    report("the log can be written again");
    m_onChange();
}

Intake::Intake(LogFile& file, int workers)
    : m_file(file)
    , m_processor(vx::log::AsyncProcessor::create(&file, workers, vx::log::AsyncProcessor::Failures::KEEP_WORKER))
{
}

void Intake::submit(
    const Reference<const String>& peer, const Reference<const vx::Integer32>& level, String text, Receipt receipt)
{
    receipt.progress->begin(receipt.bytes);
    try {
        const Reference<Entry> entry(new Entry(receipt));
        const auto set = [&](const String& name, const vx::Object* value) {
            entry->setField(name, Reference<const vx::Object>(value).get());
        };
        set(m_names.peer, peer.get()); // shared by the entries of a client, as the level is
        set(m_names.level, level.get());
        set(m_names.text, new String(std::move(text)));
        set(m_names.timestamp, new vx::log::ZonedTimeStamp);
        const std::lock_guard lock(m_lock);
        set(m_names.sequence, new vx::Integer64(++m_sequence));
        m_file.expect(receipt);
        try {
            m_processor->process(entry.get());
        } catch (...) {
            m_file.cancel(receipt);
            throw;
        }
    } catch (...) {
        receipt.progress->fail(receipt.bytes);
        throw;
    }
}

} // namespace vxlogd
