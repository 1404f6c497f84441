#pragma once

#include "vx/Object.h"
#include "vx/Reference.h"
#include "vx/net/TcpSocket.h"
#include "vx/sync/Mutex.h"

namespace vx::net {

/// Listens on all IPv4 addresses of the host. Failures are exceptions.
class VX_API TcpServerSocket : public Object {
public:
    /// Port 0 is one that the system picks. `backlog` is the system's. Throws IoException where there is no socket to be
    /// had, Exception where the port cannot be.
    TcpServerSocket(unsigned short port, int backlog);
    TcpServerSocket(const TcpServerSocket&) = delete;
    TcpServerSocket& operator=(const TcpServerSocket&) = delete;
    ~TcpServerSocket() noexcept(false) override;

    /// Waits without limit. Throws Exception.
    Reference<TcpSocket> accept();
    /// The port in host order, which the system may have picked.
    unsigned short getPort() const;

private:
    sync::Mutex m_lock; ///< nobody's: it keeps the place that derived classes know
    const Reference<TcpSocketHandle> m_handle;
};

} // namespace vx::net
