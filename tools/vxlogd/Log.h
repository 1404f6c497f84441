#pragma once

#include "Backlog.h"
#include "Batch.h"
#include "Clients.h"
#include "Form.h"
#include "Settings.h"
#include "Tail.h"
#include "Undelivered.h"

#include <vx/Object.h>
#include <vx/Reference.h>
#include <vx/io/OutputStream.h>
#include <vx/log/AsyncProcessor.h>
#include <vx/log/ILogEntry.h>
#include <vx/log/ILogProcessor.h>

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace vxlogd {

/// The end of the log's chain: writes entries to the file, as many at once as are waiting, and then tells their
/// connections. If the file cannot be written, it tries again until it can: nothing of a failed write stays in the file,
/// so no line is there twice. A line that has no form in the encoding of the log is reported to its connection as
/// failed. Lines that wait for the brokers are passed on before they are written, because they may arrive there at once.
class LogFile final : public vx::Object, public vx::log::ILogProcessor {
public:
    /// `onChange` is called when clients can be read again, when the log cannot be written, and when it can be written
    /// again. It may be called on any thread and must not call this object. Throws vxtools::Failure if the file cannot
    /// be opened, and what the writers of the library throw.
    LogFile(const Settings& settings, std::function<void()> onChange);
    ~LogFile() noexcept override;

    VX_OBJECT_UNKNOWN(vx::Object)

    /// Between two entries. After a failure the old file stays in use.
    void reopen(const Settings& settings);
    /// From now on lines are lost that cannot be written at once.
    void giveUp();
    /// Ends a document.
    void close();

    /// Counts a line that will be in a batch.
    void count(std::size_t bytes) { m_backlog.add(bytes); }
    /// Announces a batch that is passed to `process` soon, or else to `cancel`.
    void expect() { ++m_expected; }
    void cancel(const Batch& batch);

    // ILogProcessor
    /// The entry has to be a Batch.
    void process(const vx::log::ILogEntry* entry) override;

    /// The form of entries in the file; may be null.
    std::shared_ptr<const Form> getForm() const;
    const Backlog& getBacklog() const { return m_backlog; }
    /// The entries that are in the log, for those who watch.
    Tail& getTail() { return m_tail; }
    Undelivered& getUndelivered() { return m_undelivered; }
    /// Why the log cannot be written; null if it can. Another object each time that this begins.
    std::shared_ptr<const std::string> getTrouble() const;
    std::uint64_t getWritten() const { return m_written; }
    /// The number of lines that were accepted and are not in the log.
    std::uint64_t getLost() const { return m_lost; }
    std::string getPath() const;

private:
    using Lock = std::unique_lock<std::mutex>;

    void open(const Settings& settings);
    void setForm(std::shared_ptr<const Form> form);
    void endDocument();
    void print(const vx::Reference<const Batch>& batch, std::size_t index);
    void printNow(const Batch& batch, std::size_t index);
    void write(Lock& lock);
    void awaitBrokers();
    void putOnFile();
    void finishAll();
    void refuseAll(const std::string& reason);
    void refuse(const Batch::Span& lines, const std::string& reason);
    void release(const Batch::Span& lines);
    void beginTrouble(const std::string& reason);
    void endTrouble();

    const std::function<void()> m_onChange;
    Backlog m_backlog;
    Tail m_tail;
    Undelivered m_undelivered;
    std::atomic<std::int64_t> m_expected = 0;
    std::mutex m_turn; ///< one batch at a time, while `m_lock` is free to open another file
    mutable std::mutex m_lock;
    std::condition_variable m_changed;
    Settings m_settings;
    vx::Reference<vx::io::OutputStream> m_file;
    vx::Reference<Block> m_block; ///< the text of the entries that are not in the file yet
    vx::Reference<vx::log::ILogProcessor> m_writer; ///< into the block; null if no file is open
    bool m_isFirst = false; ///< only the writer knows the form of the next entry
    std::vector<Batch::Span> m_entries; ///< those of the block
    mutable std::mutex m_formLock;
    std::shared_ptr<const Form> m_form;
    bool m_hasGivenUp = false;
    std::atomic<bool> m_isLosing = false;
    mutable std::mutex m_troubleLock; ///< never held during a write, which may take long
    std::shared_ptr<const std::string> m_trouble;
    std::string m_path;
    std::atomic<std::uint64_t> m_written = 0;
    std::atomic<std::uint64_t> m_lost = 0;
};

/// Numbers lines, and passes them to the log. With one worker the sequence numbers are in the order of the log.
class Intake {
public:
    Intake(LogFile& file, int workers);

    std::shared_ptr<const Form> getForm() const { return m_file.getForm(); }
    /// Counts a line that is in a batch.
    void expect(std::size_t bytes) { m_file.count(bytes); }
    /// If this throws, the lines of the batch have failed.
    void submit(const vx::Reference<Batch>& batch);
    void waitUntilDone() { m_processor->waitUntilDone(); }
    /// Whether clients have to wait until lines before theirs are in the log.
    bool isFull() const { return m_file.getBacklog().isFull(); }
    /// Whether a client may have many lines in the queue without making the others wait.
    bool isShort() const { return m_file.getBacklog().isShort(); }
    std::shared_ptr<const std::string> getTrouble() const { return m_file.getTrouble(); }
    Clients& getClients() { return m_clients; }
    const Undelivered& getUndelivered() const { return m_file.getUndelivered(); }

private:
    LogFile& m_file;
    std::mutex m_lock;
    std::int64_t m_sequence = 0;
    Clients m_clients;
    vx::Reference<vx::log::AsyncProcessor> m_processor;
};

} // namespace vxlogd
