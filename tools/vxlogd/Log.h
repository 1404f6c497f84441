#pragma once

#include "Receipt.h"
#include "Settings.h"

#include <vx/Object.h>
#include <vx/Reference.h>
#include <vx/io/OutputStream.h>
#include <vx/log/AsyncProcessor.h>
#include <vx/log/ILogEntry.h>
#include <vx/log/ILogProcessor.h>

#include <atomic>
#include <mutex>
#include <string>

namespace vxlogd {

/// The end of the log's chain: writes each entry to the file and then completes its receipt. A failed line is reported
/// to its connection, and the first of several in a row also to standard error.
class LogFile final : public vx::Object, public vx::log::ILogProcessor {
public:
    /// Throws vxtools::Failure if the file cannot be opened, and what the writers of the library throw.
    explicit LogFile(const Settings& settings);
    ~LogFile() noexcept override;

    VX_OBJECT_UNKNOWN(vx::Object)

    /// Between two entries. After a failure the old file stays in use.
    void reopen(const Settings& settings);
    /// Ends a document.
    void close();

    // ILogProcessor
    void process(const vx::log::ILogEntry* entry) override;

private:
    void open(const Settings& settings);

    std::mutex m_lock;
    vx::Reference<vx::io::OutputStream> m_file;
    vx::Reference<vx::log::ILogProcessor> m_writer;
    bool m_syncs = false;
    std::atomic<bool> m_isFailing = false;
};

/// Turns lines into entries. With one worker the sequence numbers are in the order of the log.
class Intake {
public:
    Intake(LogFile& file, int workers);

    void submit(const vx::String& peer, int level, const vx::String& text, Receipt receipt);
    void waitUntilDone() { m_processor->waitUntilDone(); }

private:
    std::mutex m_lock;
    std::int64_t m_sequence = 0;
    vx::Reference<vx::log::AsyncProcessor> m_processor;
};

} // namespace vxlogd
