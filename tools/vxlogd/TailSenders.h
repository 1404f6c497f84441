#pragma once

#include "Tail.h"

#include <condition_variable>
#include <cstddef>
#include <mutex>
#include <set>

namespace vxlogd {

/// Sends the tail to clients of the status socket, each in a separate thread. A line tells how many entries are kept;
/// then come the entries as lines of JSON. A client that does not read holds up nothing: it misses entries, and
/// {"missed":N} tells it so.
class TailSenders {
public:
    explicit TailSenders(Tail& tail)
        : m_tail(tail)
    {
    }
    /// Ends all connections.
    ~TailSenders();
    TailSenders(const TailSenders&) = delete;
    TailSenders& operator=(const TailSenders&) = delete;

    /// Takes over the connection. Without `follows` it ends after the entries that are kept. False if there are too
    /// many; then the connection stays with the caller.
    bool start(int client, bool follows);

private:
    void send(int client, bool follows);

    Tail& m_tail;
    std::mutex m_lock;
    std::condition_variable m_changed;
    std::set<int> m_clients;
};

} // namespace vxlogd
