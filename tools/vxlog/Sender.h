#pragma once

#include "Backlog.h"
#include "Delivery.h"
#include "Destination.h"
#include "Link.h"
#include "Teller.h"
#include "Wake.h"

#include <atomic>
#include <chrono>
#include <cstdint>
#include <exception>
#include <memory>
#include <optional>
#include <random>
#include <string>
#include <string_view>
#include <thread>

namespace vxlog {

/// Sends the lines of a backlog to a vxlogd, on its own thread. A lost connection is opened again, and what the
/// server has not acknowledged is sent again. The numbers of the lines let the server drop what it already has.
class Sender final : public Delivery {
public:
    struct Policy {
        int level = 0;
        bool hasLevels = false; ///< each line begins with its level: "<3>text"
        bool keeps = false; ///< the backlog outlives this program, so that the server may be away
    };

    /// The backlog must outlive this object.
    Sender(const Destination& destination, const Policy& policy, Backlog& backlog, Teller& teller);
    ~Sender() override;
    Sender(const Sender&) = delete;
    Sender& operator=(const Sender&) = delete;

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

    void run();
    bool openLink(const Link::Wait& wait);
    bool serve();
    void greet();
    bool beats() const;
    bool sendAll();
    bool hearAll();
    void hear(std::string_view answer);
    void acknowledge(std::uint64_t last);
    void advance();
    void lose();
    void tellLoss();
    void pause();
    /// Waits for the events, a wake, a signal or a time. True if the descriptor is ready.
    bool waitFor(int descriptor, short events, Clock::time_point until);
    Clock::time_point patienceEnd();
    void checkPatience();
    bool isAllDone() const;
    [[noreturn]] void giveUp(const vxtools::Text& why);

    const Destination m_destination;
    const Policy m_policy;
    const std::string m_name;
    Backlog& m_backlog;
    Teller& m_teller;
    const std::uint64_t m_firstOfRun;
    const std::optional<vxtools::TlsContext> m_tls; ///< for encryption

    // Of the connection.
    std::unique_ptr<Link> m_link;
    std::uint64_t m_begin = 1; ///< its first line
    std::uint64_t m_next = 1; ///< the next line to be read from the backlog
    std::string m_output;
    std::string_view m_rest; ///< of the output
    std::string m_heard;
    bool m_isHeard = false; ///< the server has acknowledged something
    bool m_isRefused = false; ///< the server does not understand the greeting
    bool m_hasEndedOutput = false;
    Clock::time_point m_lastSent;

    // Of the server.
    bool m_isOldServer = false; ///< it knows neither clients nor signs of life
    std::uint64_t m_acknowledged = 0;
    Clock::time_point m_lastProgress;
    std::optional<Clock::time_point> m_awaySince;
    std::string m_reason; ///< why it is away
    bool m_isLossTold = false;
    bool m_mayHaveLost = false; ///< lines that no answer confirms
    std::chrono::milliseconds m_pause {};
    std::minstd_rand m_random {std::random_device()()};

    // Of the input.
    std::optional<Clock::time_point> m_endingSince;
    std::optional<Clock::time_point> m_signalSince;

    Wake m_wake; ///< for the thread
    Wake m_room; ///< for the thread that appends
    std::atomic<bool> m_isEnding {false}; ///< nothing more is appended
    std::atomic<bool> m_isStopping {false}; ///< without a wait for answers
    std::atomic<bool> m_isAway {false};
    std::atomic<bool> m_hasFailed {false};
    std::exception_ptr m_failure; ///< set before `m_hasFailed`
    std::thread m_thread;
};

} // namespace vxlog
