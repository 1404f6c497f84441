#include "Sending.h"

#include "Ending.h"
#include "KafkaSender.h"
#include "Lines.h"
#include "Sender.h"
#include "Spool.h"
#include "Texts.h"
#include "common/Failure.h"

#include <cstdint>
#include <exception>
#include <memory>
#include <string>

namespace vxlog {

using namespace vxtools;

namespace {

/// The way of the lines from the input into the backlog.
class Intake {
public:
    Intake(const Options& options, Backlog& backlog, Spool* spool, Delivery& sender, Teller& teller)
        : m_backlog(backlog)
        , m_spool(spool)
        , m_sender(sender)
        , m_teller(teller)
        , m_hasLevels(hasLevels(options))
        , m_folder(options.spool)
    {
    }

    /// With a spool, lines of one run may have other levels than those of the next one.
    static bool hasLevels(const Options& options)
    {
        return !options.spool.empty() || !options.levelFrom.empty() || options.to->kafka;
    }

    void take(const Line& line)
    {
        std::string bytes = line.text.toUtf8();
        if (m_hasLevels)
            bytes.insert(0, std::string("<").append(std::to_string(line.level)).append(">"));
        else if (bytes == "\x16")
            bytes = "␖"; // the byte alone is a sign of life; the log would show it like this anyway
        while (!m_backlog.append(bytes)) {
            const bool isWritten = m_backlog.flush();
            m_sender.wake();
            if (m_spool != nullptr && (!isWritten || m_sender.isAway()))
                return lose(isWritten ? Text(SPOOL_FULL()) : Text(m_spool->reason()));
            m_sender.waitForRoom();
        }
        constexpr std::size_t BLOCK_SIZE = 64 * 1024;
        m_bytes += bytes.size();
        if (m_bytes >= BLOCK_SIZE)
            flush();
    }

    void flush()
    {
        m_bytes = 0;
        m_backlog.flush();
        m_sender.wake();
        if (m_spool == nullptr)
            m_sender.check();
    }

    /// Throws Failure if lines were lost, or if some still wait in the spool.
    void finish()
    {
        flush();
        std::exception_ptr failure;
        try {
            m_sender.finish();
        } catch (const Failure& thrown) {
            if (m_spool == nullptr)
                throw;
            m_teller.tell(thrown.text());
            failure = std::current_exception();
        }
        if (m_spool == nullptr)
            return;
        m_backlog.flush();
        if (const std::uint64_t lost = m_lost + m_spool->unwritten() + m_spool->damaged(); lost > 0)
            throw Failure(m_folder, LINES_LOST(lost));
        if (failure != nullptr) {
            const Backlog::Range range = m_backlog.range();
            throw Failure(m_folder, LINES_WAIT(range.end - range.first));
        }
    }

private:
    void lose(const Text& why)
    {
        if (m_lost++ == 0)
            m_teller.tell(SPOOL_LOSES(m_folder, why));
    }

    Backlog& m_backlog;
    Spool* const m_spool; ///< null if the backlog is in memory
    Delivery& m_sender;
    Teller& m_teller;
    const bool m_hasLevels;
    const std::string m_folder;
    std::size_t m_bytes = 0; ///< since the last flush
    std::uint64_t m_lost = 0;
};

} // namespace

void sendLines(const Options& options, const Input& input, Messages& messages)
{
    Intake* intake = nullptr;
    Lines lines(options, input, [&] { intake->flush(); });
    Teller teller(messages);
    std::unique_ptr<Spool> spool;
    MemoryBacklog memory;
    if (!options.spool.empty())
        spool = std::make_unique<Spool>(options.spool, options.spoolBytes);
    Backlog& backlog = spool != nullptr ? static_cast<Backlog&>(*spool) : memory;
    std::unique_ptr<Delivery> way;
    if (options.to->kafka)
        way = std::make_unique<KafkaSender>(*options.to, spool != nullptr, backlog, teller);
    else
        way = std::make_unique<Sender>(*options.to,
            Sender::Policy {*options.to->level, Intake::hasLevels(options), spool != nullptr}, backlog, teller);
    Delivery& sender = *way;
    if (spool == nullptr)
        sender.connect(); // before signals are caught, so that a signal still ends the program at once
    Intake taking(options, backlog, spool.get(), sender, teller);
    intake = &taking;
    catchEndingSignals();
    sender.start();
    std::exception_ptr failure; // of the input: what was read before is still sent
    try {
        for (Line line; lines.next(line);)
            taking.take(line);
    } catch (const Failure&) {
        if (sender.hasFailed() && spool == nullptr)
            throw;
        failure = std::current_exception();
    }
    taking.finish();
    if (failure != nullptr)
        std::rethrow_exception(failure);
}

} // namespace vxlog
