#pragma once

#include "Batch.h"
#include "Log.h"
#include "Receipt.h"
#include "common/Wire.h"

#include <vx/Reference.h>
#include <vx/net/TcpWorkerSocket2.h>

#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>

namespace vxlogd {

using Clock = std::chrono::steady_clock;

/// The settings that may change while connections are open.
struct Limits {
    std::atomic<int> level;
    std::atomic<std::size_t> maxLine;
    std::atomic<unsigned int> idleSeconds;
    std::atomic<std::size_t> maxConnections;

    /// Certificates and keys of new connections; null is no encryption.
    std::shared_ptr<const vxtools::TlsContext> getTls() const
    {
        const std::lock_guard lock(m_tlsLock);
        return m_tls;
    }
    void setTls(std::shared_ptr<const vxtools::TlsContext> tls)
    {
        const std::lock_guard lock(m_tlsLock);
        m_tls = std::move(tls);
    }

private:
    mutable std::mutex m_tlsLock;
    std::shared_ptr<const vxtools::TlsContext> m_tls;
};

/// The connection of one client. Its memory is limited to one line or one read, 64 KiB of lines that are being logged or
/// wait for the brokers, and one answer. It stops reading from a client that sends too fast or does not read its answers.
class Connection {
public:
    /// `number` is the one by which `waker` knows it.
    Connection(std::unique_ptr<vx::net::TcpWorkerSocket2> socket, Intake& intake, const Limits& limits,
        std::shared_ptr<Waker> waker, std::uint64_t number);

    vx::net::TcpWorkerSocket2* getSocket() const { return m_socket.get(); }
    /// False once nothing more will come, and while there is no room for more.
    bool wantsToRead() const;
    bool wantsToWrite() const { return m_wire.wantsToWrite(!m_output.empty()); }
    /// Call these when the socket is ready.
    void read();
    void write();
    /// Logs received lines as far as there is room for them, and answers for those that are in the log.
    void goOn();
    /// Reads what has been received, and nothing after that.
    void finish();
    /// Whether to call `finish`, because the client can no longer be answered.
    bool isFinishing() const { return m_isFinishing; }
    /// As `finish`, without answers, if the client has been silent too long. A client that was refused has less time.
    /// Before that, returns the memory that a silent client does not need.
    void endIfSilent(Clock::time_point now);
    bool isOver() const;
    /// When bytes were last received or sent, or a line was last written to the log.
    Clock::time_point lastSign() const { return m_lastSign; }

private:
    Connection(std::unique_ptr<vx::net::TcpWorkerSocket2> socket, Intake& intake, const Limits& limits,
        std::shared_ptr<Waker> waker, std::uint64_t number, const vxtools::TlsContext* tls);

    bool hasRoom() const;
    bool awaitsBrokers() const { return m_wantsAnswers && m_intake.getUndelivered().isActive(); }
    void tellTrouble();
    void takeLines();
    void takeLine(std::string_view line, bool isCut);
    int takeLevel(std::string_view& line) const;
    void addToBatch(std::size_t bytes, int level, std::string_view text);
    void submitBatch();
    void greet(std::string_view options);
    /// Continues where the client `id` was when its last connection ended.
    void resume(std::string_view id, std::uint64_t first);
    /// Tells the client why no more lines are accepted. What it still sends is read and dropped for some time: closing
    /// a socket with unread bytes resets the connection, and the client would not receive the reason.
    void refuse(const std::string& reason);

    std::unique_ptr<vx::net::TcpWorkerSocket2> m_socket;
    vxtools::Wire m_wire;
    const bool m_isEncrypted;
    Intake& m_intake;
    const Limits& m_limits;
    const std::shared_ptr<Waker> m_waker;
    const std::uint64_t m_number; ///< by which the waker knows the connection
    std::shared_ptr<Progress> m_progress;
    std::uint64_t m_owner; ///< the number of this connection at the progress
    const std::string m_peer;
    int m_level;
    std::string m_client; ///< its id, or one of this connection; empty if the log does not need it
    bool m_wantsAnswers = false;
    bool m_owesAnswer = false; ///< even if no line is done
    bool m_beats = false; ///< whether a line may be only a sign of life
    bool m_isNumbered = false; ///< the client sends again what was not acknowledged
    bool m_hasLevels = false; ///< each line begins with its level
    bool m_isFirstLine = true;
    bool m_skipsLine = false; ///< the rest of a line that was too long
    bool m_hasEnded = false; ///< nothing more is read
    bool m_isRefused = false;
    bool m_isFinishing = false;
    bool m_isBroken = false; ///< nothing can be sent
    bool m_isParting = false; ///< the client may still receive why the encryption failed
    bool m_isLate = false; ///< its client has another connection
    std::size_t m_lastBytes = 1024 * 1024; ///< the most that is read after the end was requested
    std::uint64_t m_lines = 0;
    std::uint64_t m_doneBefore = 0;
    std::uint64_t m_answered = 0;
    vx::Reference<Batch> m_batch; ///< lines that are taken and not in the queue yet
    std::string m_input;
    std::string m_output;
    std::shared_ptr<const std::string> m_toldTrouble; ///< of the log or the brokers, of which the client knows
    Clock::time_point m_lastSign = Clock::now();
    Clock::time_point m_partedAt;
};

} // namespace vxlogd
