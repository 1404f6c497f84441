#include "Log.h"

#include "Complaint.h"
#include "common/Failure.h"
#include "common/FileName.h"

#include <vx/Exception.h>
#include <vx/io/EntryStream.h>
#include <vx/io/FileOutputStream.h>
#include <vx/io/RotatingFileStream.h>
#include <vx/log/TimeStamp.h>
#include <vx/sync/ScopedWait.h>

#include <chrono>
#include <exception>
#include <filesystem>
#include <new>
#include <utility>

namespace vxlogd {

using vx::Reference;
using vx::String;
using vx::log::ILogEntry;

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
    if (settings.rotation.access != 0)
        vxtools::makeFile(settings.log, static_cast<unsigned int>(settings.rotation.access));
    try {
        if (!settings.forward.empty()) { // what a killed server left of an entry is removed before the log is read
            vx::io::FileOutputStream file(name, vx::io::FileOutputStream::APPEND);
            const vx::sync::ScopedWait repair(&file);
        }
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
    , m_undelivered(settings.forwardAck == ForwardAck::BROKERS, m_onChange)
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
    m_undelivered.setActive(settings.forwardAck == ForwardAck::BROKERS);
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
    setForm(nullptr);
}

void LogFile::cancel(const Batch& batch)
{
    release(batch.all());
    const std::lock_guard turn(m_turn);
    Lock lock(m_lock);
    if (--m_expected == 0)
        write(lock);
}

void LogFile::process(const ILogEntry* entry)
{
    const std::lock_guard turn(m_turn);
    Lock lock(m_lock);
    const Reference<const Batch> batch(static_cast<const Batch*>(entry));
    for (std::size_t index = 0; index < batch->getSize(); ++index) {
        print(batch, index);
        if (m_block->getSize() >= blockSize(m_settings))
            write(lock);
    }
    if (--m_expected == 0)
        write(lock); // otherwise the next batch comes soon
}

std::shared_ptr<const Form> LogFile::getForm() const
{
    const std::lock_guard lock(m_formLock);
    return m_form;
}

std::shared_ptr<const std::string> LogFile::getTrouble() const
{
    const std::lock_guard lock(m_troubleLock);
    return m_trouble;
}

std::string LogFile::getPath() const
{
    const std::lock_guard lock(m_troubleLock);
    return m_path;
}

void LogFile::open(const Settings& settings)
{
    if (settings.format == Format::XML)
        moveAside(settings.log);
    const Reference<vx::io::OutputStream> file = openForAppend(settings);
    const Reference<Block> block(new Block);
    const Reference<vx::log::ILogProcessor> writer = createWriter(settings, *block);
    std::shared_ptr<const Form> form = Form::learn(settings);
    try {
        if (block->getSize() > 0)
            file->write(block->get().data(), static_cast<std::int32_t>(block->getSize()));
    } catch (const vx::Exception& failure) {
        throw vxtools::Failure(settings.log, vxtools::textOf(failure));
    }
    block->cut(0);
    m_settings = settings;
    {
        const std::lock_guard lock(m_troubleLock);
        m_path = settings.log;
    }
    m_file = file;
    m_block = block;
    m_writer = writer;
    m_isFirst = form != nullptr && form->beginsOtherwise();
    setForm(std::move(form));
    for (const Batch::Span& lines : std::exchange(m_entries, {})) {
        for (std::size_t index = 0; index < lines.count; ++index)
            print(lines.batch, lines.first + index); // again, because the new file may have another format
    }
}

void LogFile::setForm(std::shared_ptr<const Form> form)
{
    {
        const std::lock_guard lock(m_formLock);
        m_form.swap(form);
    }
    if (form != nullptr)
        form->retire();
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
void LogFile::print(const Reference<const Batch>& batch, std::size_t index)
{
    const std::size_t size = m_block->getSize();
    const std::string reason = reasonOf([&] {
        const bool follows = !m_entries.empty() && m_entries.back().batch == batch
            && m_entries.back().first + m_entries.back().count == index;
        if (!follows)
            m_entries.push_back({batch, index, 0});
        try {
            if (m_writer != nullptr) // otherwise `open` will print it
                printNow(*batch, index);
            ++m_entries.back().count;
        } catch (...) {
            m_block->cut(size);
            if (!follows)
                m_entries.pop_back();
            throw;
        }
    });
    if (!reason.empty())
        refuse({batch, index, 1}, reason);
}

void LogFile::printNow(const Batch& batch, std::size_t index)
{
    if (!m_isFirst && batch.print(index, m_form.get(), *m_block))
        return;
    m_writer->process(batch.createEntry(index).get());
    m_isFirst = false;
}

/// Returns when all entries are in the file, or are lost because of `giveUp`.
void LogFile::write(Lock& lock)
{
    constexpr std::chrono::milliseconds PAUSE(250);

    if (const std::string shortage = reasonOf([&] { awaitBrokers(); }); !shortage.empty())
        return refuseAll(shortage);
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

void LogFile::awaitBrokers()
{
    for (const Batch::Span& lines : m_entries) {
        if (lines.batch->awaits())
            m_undelivered.add(lines);
    }
}

void LogFile::putOnFile()
{
    vx::io::EntryStream entries(m_file.get(), false); // they begin on a new line
    entries.write(m_block->get().data(), static_cast<std::int32_t>(m_block->getSize()));
    entries.flush();
    m_block->cut(0);
}

void LogFile::finishAll()
{
    m_tail.add(m_entries);
    if (!m_entries.empty())
        m_isLosing = false;
    for (const Batch::Span& lines : m_entries)
        m_written += lines.count;
    bool hasAwaited = false;
    for (const Batch::Span& lines : m_entries) {
        release(lines);
        if (lines.batch->awaits()) {
            hasAwaited = true;
            continue;
        }
        try {
            lines.finish();
        } catch (const std::exception&) { // no memory: the client will not hear that the lines are in the log
            lines.fail();
        }
    }
    if (hasAwaited)
        m_undelivered.setWritten();
    m_entries.clear();
}

void LogFile::refuseAll(const std::string& reason)
{
    for (const Batch::Span& lines : m_entries)
        refuse(lines, reason);
    m_entries.clear();
    m_block->cut(0);
}

/// The client is told last, because it may look for the message at once.
void LogFile::refuse(const Batch::Span& lines, const std::string& reason)
{
    m_lost += lines.count;
    release(lines);
    if (!m_isLosing.exchange(true))
        report("a line cannot be written to the log: ", reason);
    lines.fail();
}

void LogFile::release(const Batch::Span& lines)
{
    if (m_backlog.remove(lines.count, lines.bytes()))
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

void Intake::submit(const Reference<Batch>& batch)
{
    try {
        const std::lock_guard lock(m_lock);
        batch->setFirstSequence(m_sequence + 1);
        m_sequence += static_cast<std::int64_t>(batch->getSize());
        m_file.expect();
        try {
            m_processor->process(batch.get());
        } catch (...) {
            m_file.cancel(*batch);
            throw;
        }
    } catch (...) {
        batch->all().fail();
        throw;
    }
}

} // namespace vxlogd
