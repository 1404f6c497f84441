#pragma once

#include "vx/Object.h"
#include "vx/Reference.h"
#include "vx/net/TcpSocket.h"
#include "vx/sync/Mutex.h"

namespace vx::net {

/// Listens on all IPv4 addresses of the host. Failures are exceptions.
class VX_API TcpServerSocket : public Object {
public:
    /// Port 0 means a port that the system chooses. `backlog` is passed to the system. Throws IoException if no socket
    /// can be created, Exception if the port cannot be used.
    TcpServerSocket(unsigned short port, int backlog);
    TcpServerSocket(const TcpServerSocket&) = delete;
    TcpServerSocket& operator=(const TcpServerSocket&) = delete;
    ~TcpServerSocket() noexcept(false) override;

    /// Waits without a limit. Throws Exception.
    Reference<TcpSocket> accept();
    /// The port in host order, also if the system chose it.
    unsigned short getPort() const;

private:
    sync::Mutex m_lock; ///< not used: it keeps the layout on which derived classes rely
    const Reference<TcpSocketHandle> m_handle;
};

} // namespace vx::net
