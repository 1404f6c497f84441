#pragma once

#include "Backlog.h"
#include "Delivery.h"
#include "Destination.h"
#include "Teller.h"
#include "Wake.h"

#include <atomic>
#include <chrono>
#include <cstdint>
#include <exception>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <thread>

namespace vxlog {

/// Sends the lines of a backlog to a topic. Each becomes an object of JSON with its level, its text, the time, the
/// host, an id of the backlog, and its number there: a line that is in the topic twice, after a crash, has the same id
/// and number.
class KafkaSender final : public Delivery {
public:
    /// The lines of `backlog`, which must outlive this object, begin with their level: "<3>text". `keeps`: it outlives
    /// the program, so that the brokers may be away.
    KafkaSender(const Destination& destination, bool keeps, Backlog& backlog, Teller& teller);
    ~KafkaSender() override;
    KafkaSender(const KafkaSender&) = delete;
    KafkaSender& operator=(const KafkaSender&) = delete;

    // Delivery
    void connect() override;
    void start() override;
    void wake() noexcept override { m_wake.set(); }
    void waitForRoom() override;
    bool isAway() const noexcept override { return m_isAway; }
    bool hasFailed() const noexcept override { return m_hasFailed; }
    void check() const override;
    void finish() override;

private:
    using Clock = std::chrono::steady_clock;
    class Entries;

    void run();
    void sendAll();
    void takeReports();
    void lookForTrouble();
    void wait();
    Clock::time_point patienceEnd();
    bool isAllDone() const;
    [[noreturn]] void giveUp();

    const Destination m_destination;
    const bool m_keeps;
    const std::string m_name;
    Backlog& m_backlog;
    Teller& m_teller;
    const std::uint64_t m_firstOfRun;
    const std::unique_ptr<Entries> m_entries;
    vx::Reference<vx::components::IVXKafkaProducer> m_producer;
    std::uint64_t m_next; ///< the next line to be read from the backlog
    std::uint64_t m_acknowledged;
    std::string m_block; ///< lines that were read
    std::string_view m_rest; ///< those that were not sent yet
    std::uint64_t m_sent; ///< the number of the next of them

    std::string m_trouble; ///< why the brokers do not take lines
    bool m_isTroubleTold = false;
    std::uint64_t m_refused = 0; ///< lines that they will never take
    std::string m_refusal;
    Clock::time_point m_lastProgress = Clock::now();
    std::optional<Clock::time_point> m_awaySince;
    std::optional<Clock::time_point> m_endingSince; ///< the end of the input
    std::optional<Clock::time_point> m_signalSince;

    Wake m_wake; ///< for the thread
    Wake m_room; ///< for the thread that appends
    std::atomic<bool> m_isEnding {false}; ///< nothing more is appended
    std::atomic<bool> m_isStopping {false};
    std::atomic<bool> m_isAway {false};
    std::atomic<bool> m_hasFailed {false};
    std::exception_ptr m_failure; ///< set before `m_hasFailed`
    std::thread m_thread;
};

} // namespace vxlog
