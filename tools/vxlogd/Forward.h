#pragma once

#include "Clients.h"
#include "ForwardSource.h"
#include "Settings.h"
#include "Status.h"
#include "Undelivered.h"
#include "common/Kafka.h"

#include <atomic>
#include <chrono>
#include <deque>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

namespace vxlogd {

/// Sends the lines of the log to the brokers of Kafka, on its own thread. It reads them from the log itself, so
/// that the log never waits for the brokers. A file beside the log holds how far they have come; what is not there yet is
/// sent by the next server that uses the log. If clients wait for the brokers, that file also holds how far each
/// of them was, and what the log has after that place is found in it at the start.
class Forwarder {
public:
    /// The log is open. Throws Failure if the component, its files or the position cannot be used.
    Forwarder(const Settings& settings, Clients& clients, Undelivered& undelivered);
    ~Forwarder();
    Forwarder(const Forwarder&) = delete;
    Forwarder& operator=(const Forwarder&) = delete;

    void start();
    /// Call it when the log is complete. Sends the rest if the brokers take it within some seconds.
    void stop();
    /// May be called from any thread.
    ForwardCounts getCounts() const;

private:
    using Clock = std::chrono::steady_clock;
    /// Who sent a line. Empty if the log does not tell.
    struct Origin {
        std::string_view client;
        std::uint64_t line = 0;
    };
    struct Sent {
        std::shared_ptr<const LogPart> part;
        std::int64_t end;
        std::string client;
        std::uint64_t line;
    };

    static Origin originOf(std::string_view line);
    void restoreClients(const std::string& log, const std::optional<ForwardPosition>& position);
    void run();
    /// True if there may be more to do at once, here and in the next one.
    bool work();
    bool sendAll();
    bool send(const ForwardSource::Line& line);
    void takeReports();
    void tellTrouble(const std::string& trouble);
    void findLost(std::uint64_t written);
    void keepPosition();
    void count();
    void wait();

    const vxtools::KafkaAddress m_address;
    const std::string m_positionPath;
    const std::string m_host;
    Clients& m_clients;
    Undelivered& m_undelivered;
    int m_lock = -1; ///< of the position, against other servers
    int m_wake = -1;
    int m_watch = -1; ///< for changes of the log; -1 if the system has none
    ForwardPosition m_position; ///< of what the brokers have
    std::unique_ptr<ForwardSource> m_source;
    vx::Reference<vx::components::IVXKafkaProducer> m_producer;
    std::string m_head; ///< of each message
    std::uint64_t m_number = 0; ///< of the last line that was sent
    std::optional<ForwardSource::Line> m_line; ///< there was no room for it
    std::string m_message;
    std::deque<Sent> m_sent;
    std::shared_ptr<const LogPart> m_part; ///< that of the position
    bool m_isChanged = false;
    Clock::time_point m_lastKept;
    std::string m_told; ///< trouble that was told
    std::uint64_t m_writtenBefore = 0; ///< these lines were in the log when all of it had been forwarded

    std::atomic<bool> m_isStopping {false};
    mutable std::mutex m_countsLock;
    ForwardCounts m_counts {};
    std::thread m_thread;
};

} // namespace vxlogd
