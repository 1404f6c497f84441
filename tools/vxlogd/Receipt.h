#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <set>
#include <string>

namespace vxlogd {

/// Wakes a thread that waits in `select`, through a pair of sockets. At most one byte is written until the thread has
/// read it.
class Waker {
public:
    Waker();
    ~Waker();
    Waker(const Waker&) = delete;
    Waker& operator=(const Waker&) = delete;

    void wake();
    /// After this call the next `wake` has an effect again.
    void hear();
    /// The socket to wait on. This object owns it until it is taken.
    unsigned int takeSocket();

private:
    int m_writeEnd = -1;
    int m_readEnd = -1;
    std::mutex m_lock;
    bool m_isAwake = false;
};

/// The progress of the lines of one connection. The connection adds each line, and the writer of the log marks lines as
/// done, in any order.
class Progress {
public:
    explicit Progress(std::shared_ptr<Waker> waker);

    void begin(std::size_t bytes);
    void finish(std::uint64_t line, std::size_t bytes);
    void fail(std::size_t bytes);

    struct State {
        std::uint64_t done; ///< lines 1 to this are in the log
        std::size_t openLines;
        std::size_t openBytes;
        bool hasFailed;
    };
    State state() const;

private:
    const std::shared_ptr<Waker> m_waker;
    mutable std::mutex m_lock;
    State m_state {};
    std::set<std::uint64_t> m_ahead; ///< lines that are in the log before an earlier one
};

/// The pending confirmation of one line for a connection.
struct Receipt {
    std::shared_ptr<Progress> progress;
    std::uint64_t line;
    std::size_t bytes;
};

} // namespace vxlogd
