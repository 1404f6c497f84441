#pragma once

#include <vx/net/SocketPoller.h>

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <memory>
#include <mutex>
#include <set>
#include <vector>

namespace vxlogd {

/// Wakes the thread that waits for the sockets of its connections, and tells it which of them have news.
class Waker {
public:
    /// Throws std::runtime_error.
    Waker();

    /// For the thread that waits.
    vx::net::SocketPoller& getPoller() { return m_poller; }

    void wake(std::uint64_t connection);
    void wakeForAll();

    struct News {
        std::vector<std::uint64_t> connections; ///< may name some that have ended, and some twice
        bool isForAll = false;
    };
    /// What has come since the last call.
    News take();

private:
    void wake(std::unique_lock<std::mutex> lock);

    ENUM_VX_E_SOCKET m_status = VX_E_SOCKET_OK;
    vx::net::SocketPoller m_poller;
    std::mutex m_lock;
    News m_news;
    bool m_isAwake = false; ///< one wake is enough until the news are taken
};

/// The progress of the lines of one client. Its connection adds each line, and the writer of the log marks lines as
/// done, in any order. If lines are done only when the brokers have them, the writer marks them as waiting, and
/// the thread that talks to the brokers as done.
class Progress {
public:
    /// `connection` is the number by which `waker` knows the connection. Without a connection the waker is null.
    Progress(std::shared_ptr<Waker> waker, std::uint64_t connection);

    /// Makes `connection` the only one whose lines are taken, and wakes the one before it. The client says that all
    /// lines before `first` are settled. Returns a number by which the next operations know the connection; 0 while
    /// lines are open after a failure.
    std::uint64_t takeOver(std::shared_ptr<Waker> waker, std::uint64_t connection, std::uint64_t first);
    bool isOwner(std::uint64_t owner) const;
    /// A connection holds it from its first claim to the moment when the lines are in the queue. So they are in the log
    /// before those of a connection that takes over.
    std::mutex& getTurn() { return m_turn; }
    enum class Claim {
        NEW,
        REPEATED, ///< an earlier connection has brought the line
        LATE ///< a later connection has taken over
    };
    /// Whether to log this line of the connection `owner`. A new one has to be passed to `begin`.
    Claim claim(std::uint64_t owner, std::uint64_t line);

    void begin(std::size_t bytes);
    /// These end `count` lines that `begin` began; `bytes` is the sum of theirs. `line` is the first.
    void finish(std::uint64_t line, std::size_t count, std::size_t bytes);
    /// The lines may be waiting.
    void fail(std::uint64_t line, std::size_t count, std::size_t bytes);

    /// From now on these lines that `begin` began wait for the brokers.
    void await(std::uint64_t line, std::size_t count, std::size_t bytes);
    bool isWaiting(std::uint64_t line) const;
    /// These end one line that waits, and do nothing if it does not. A line that is lost has to be sent again.
    void deliver(std::uint64_t line, std::size_t bytes);
    void lose(std::uint64_t line, std::size_t bytes);

    /// What a later server has to know of lines that do not wait, as words of a text, and back. False if the
    /// words are wrong.
    void save(std::ostream& words) const;
    bool restore(std::istream& words);

    struct State {
        std::uint64_t done; ///< lines 1 to this are in the log, or the brokers have them
        std::size_t openLines; ///< not in the log yet
        std::size_t openBytes;
        std::size_t waitingLines; ///< for the brokers
        std::size_t waitingBytes;
        bool hasFailed;
        bool hasLost; ///< the log no longer has lines that waited for the brokers
    };
    State state() const;
    /// The state for the connection that was woken: changes after this call wake it again.
    State takeNews();

private:
    bool endWaiting(std::uint64_t line, std::size_t bytes);
    void settle(std::uint64_t line);
    void tell();

    std::mutex m_turn;
    mutable std::mutex m_lock;
    std::shared_ptr<Waker> m_waker; ///< of the thread that serves the connection
    std::uint64_t m_connection;
    bool m_isTold = false; ///< that there are news
    std::uint64_t m_owner = 0;
    std::uint64_t m_claimed = 0; ///< lines 1 to this were claimed
    State m_state {};
    std::set<std::uint64_t> m_ahead; ///< lines that were done before an earlier one
    std::set<std::uint64_t> m_waiting;
};

} // namespace vxlogd
