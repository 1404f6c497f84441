#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <set>
#include <string>

namespace vxlogd {

/// Wakes a thread that waits in a select: one end of a pair of sockets, written at most once until it is heard.
class Waker {
public:
    Waker();
    ~Waker();
    Waker(const Waker&) = delete;
    Waker& operator=(const Waker&) = delete;

    void wake();
    /// From here on the next `wake` is heard again.
    void hear();
    /// The end to wait on. Owned here until it is taken.
    unsigned int takeSocket();

private:
    int m_writeEnd = -1;
    int m_readEnd = -1;
    std::mutex m_lock;
    bool m_isAwake = false;
};

/// How far the lines of one connection are. The connection counts them in, the writer of the log counts them out, in any
/// order.
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
    std::set<std::uint64_t> m_ahead; ///< in the log before an earlier one
};

/// What the log owes to a connection for one line.
struct Receipt {
    std::shared_ptr<Progress> progress;
    std::uint64_t line;
    std::size_t bytes;
};

} // namespace vxlogd
