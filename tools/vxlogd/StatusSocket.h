#pragma once

#include "Status.h"
#include "TailSenders.h"

#include <vx/exec/Thread.h>

#include <atomic>
#include <memory>
#include <string>
#include <sys/types.h>

namespace vxlogd {

class Descriptor;

/// Answers with the figures of the server on a Unix socket that only its user may open. A client sends "status",
/// "metrics", "tail" or "tail follow" and a line feed, or nothing, which means "status".
class StatusSocket {
public:
    /// Listens at `path`, but does not answer yet. Removes the socket of a server that was killed. Throws
    /// vxtools::Failure, also if another server uses the path.
    explicit StatusSocket(const std::string& path);
    /// Removes the socket.
    ~StatusSocket();
    StatusSocket(const StatusSocket&) = delete;
    StatusSocket& operator=(const StatusSocket&) = delete;

    /// Whether `path` is this socket.
    bool isAt(const std::string& path) const;
    /// Answers on a thread. `status` and `tail` must outlive this object.
    void start(Status& status, Tail& tail);

private:
    void run(Status& status);
    void answer(Descriptor& client, Status& status);

    const std::string m_path;
    int m_socket = -1;
    dev_t m_device = 0;
    ino_t m_inode = 0;
    std::atomic<bool> m_isStopping = false;
    std::unique_ptr<TailSenders> m_senders;
    std::unique_ptr<vx::exec::Thread> m_thread;
};

/// What the server at `path` answers. Throws vxtools::Failure.
std::string askStatus(const std::string& path, const std::string& request);

} // namespace vxlogd
