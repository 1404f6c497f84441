#pragma once

#include "Backlog.h"
#include "Destination.h"
#include "Teller.h"
#include "Wake.h"

#include <atomic>
#include <chrono>
#include <cstdint>
#include <exception>
#include <optional>
#include <string>
#include <thread>

namespace vxlog {

/// Brings the lines of a backlog to their destination, on its own thread.
class Delivery {
public:
    virtual ~Delivery() = default;
    Delivery(const Delivery&) = delete;
    Delivery& operator=(const Delivery&) = delete;

    /// Connects before `start` instead of on the thread. Throws Failure.
    virtual void connect() = 0;
    void start();

    /// Call this after appending to the backlog.
    void wake() noexcept { m_wake.set(); }
    /// Returns when there may be room in the backlog, or when the destination is away. Throws Failure if the thread has
    /// failed.
    void waitForRoom();
    /// Whether the destination is known not to accept lines at the moment.
    bool isAway() const noexcept { return m_isAway; }
    bool hasFailed() const noexcept { return m_hasFailed; }
    /// Throws the failure of the thread if there is one.
    void check() const;

    /// Returns when the destination has confirmed that it has all lines, or without answers, when it has accepted them.
    /// Throws Failure if it does not.
    void finish();

protected:
    using Clock = std::chrono::steady_clock;
    static constexpr Clock::time_point NEVER = Clock::time_point::max();

    /// `keeps`: the backlog outlives this program, so that the destination may be away. It must outlive this object.
    Delivery(const Destination& destination, bool keeps, Backlog& backlog, Teller& teller);

    /// What the thread does.
    virtual void run() = 0;
    virtual void disconnect() noexcept = 0;
    /// The destructor of each derived class calls this first, because the thread uses it.
    void stop() noexcept;

    /// When to give up; it depends on what is known by now.
    Clock::time_point patienceEnd();
    bool isAllDone() const;
    /// Appends further lines to `target`. If they cannot be read now, tells that once, and returns false; the next try is
    /// due at `m_readAgain`. At the end of the input it throws Failure instead.
    bool readBacklog(std::string& target, std::size_t most);
    [[noreturn]] void giveUp(const vxtools::Text& why) const;

    const Destination m_destination;
    const bool m_keeps;
    const std::string m_name;
    Backlog& m_backlog;
    Teller& m_teller;
    const std::uint64_t m_firstOfRun;

    std::uint64_t m_next; ///< the next line to be read from the backlog
    Clock::time_point m_readAgain = NEVER;
    bool m_isReadingTold = false;
    Clock::time_point m_lastProgress = Clock::now();
    std::optional<Clock::time_point> m_awaySince;
    std::optional<Clock::time_point> m_endingSince; ///< the end of the input
    std::optional<Clock::time_point> m_signalSince;

    Wake m_wake; ///< for the thread
    Wake m_room; ///< for the thread that appends
    std::atomic<bool> m_isEnding {false}; ///< nothing more is appended
    std::atomic<bool> m_isStopping {false}; ///< without a wait for answers
    std::atomic<bool> m_isAway {false};

private:
    std::atomic<bool> m_hasFailed {false};
    std::exception_ptr m_failure; ///< set before `m_hasFailed`
    std::thread m_thread;
};

} // namespace vxlog
