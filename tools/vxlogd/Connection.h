#pragma once

#include "Log.h"
#include "Receipt.h"

#include <vx/String.h>
#include <vx/net/TcpWorkerSocket2.h>

#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace vxlogd {

using Clock = std::chrono::steady_clock;

/// What may change while connections stand.
struct Limits {
    std::atomic<int> level;
    std::atomic<std::size_t> maxLine;
    std::atomic<unsigned int> idleSeconds;
    std::atomic<std::size_t> maxConnections;
};

/// One client. It takes memory for one line or a read, for a few lines on their way to the log, and for one answer: from a
/// client that is too fast or hears nothing it does not read.
class Connection {
public:
    Connection(std::unique_ptr<vx::net::TcpWorkerSocket2> socket, Intake& intake, const Limits& limits,
        std::shared_ptr<Waker> waker);

    vx::net::TcpWorkerSocket2* getSocket() const { return m_socket.get(); }
    /// No more is read once nothing more will come.
    bool wantsToRead() const;
    bool wantsToWrite() const { return !m_output.empty(); }
    /// For a socket that is ready.
    void read();
    void write();
    /// Takes lines as far as there is room for them, and answers for those that are in the log.
    void goOn();
    /// Takes what has been received, and then no more.
    void finish();
    /// Whether that is to be done, because the client can no longer be answered.
    bool isFinishing() const { return m_isFinishing; }
    /// As `finish` after too long a silence, and without answers. A client that was refused has less time.
    void endIfSilent(Clock::time_point now);
    bool isOver() const;
    /// When the last bytes came or went, or the last line was in the log.
    Clock::time_point lastSign() const { return m_lastSign; }

private:
    bool hasRoom() const;
    void takeLines();
    void takeLine(std::string_view line, bool isCut);
    void greet(std::string_view options);
    /// Says why nothing more is taken. What the client still sends is read and dropped for some time: a socket that is closed
    /// over unread bytes is reset, and the client would not hear the reason.
    void refuse(const std::string& reason);

    std::unique_ptr<vx::net::TcpWorkerSocket2> m_socket;
    Intake& m_intake;
    const Limits& m_limits;
    const std::shared_ptr<Progress> m_progress;
    vx::String m_peer;
    int m_level;
    bool m_wantsAnswers = false;
    bool m_isFirstLine = true;
    bool m_skipsLine = false; ///< the rest of one that was too long
    bool m_hasEnded = false; ///< nothing more is read
    bool m_isRefused = false;
    bool m_isFinishing = false;
    bool m_isBroken = false; ///< nothing can be sent
    std::size_t m_lastBytes = 1024 * 1024; ///< read at most once the end is wanted
    std::uint64_t m_lines = 0;
    std::uint64_t m_doneBefore = 0;
    std::uint64_t m_answered = 0;
    std::string m_input;
    std::string m_output;
    Clock::time_point m_lastSign = Clock::now();
    Clock::time_point m_refusedAt;
};

} // namespace vxlogd
