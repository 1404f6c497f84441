#pragma once

#include "Destination.h"
#include "common/Wire.h"

#include <vx/net/TcpClientSocket2.h>

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace vxlog {

/// One connection to a server. No call waits.
class Link {
public:
    /// Waits until the descriptor is ready for these events of `poll`. False if the caller gives up.
    using Wait = std::function<bool(int descriptor, short events)>;

    /// Tries each address of the host. Null with a reason if none answers, and without one if `wait` gave up. A null
    /// `tls` is a connection without encryption.
    static std::unique_ptr<Link> open(
        const Destination& destination, const vxtools::TlsContext* tls, const Wait& wait, std::string& reason);

    int descriptor() const;
    using Result = vxtools::Wire::Result;
    /// Sends the first bytes of `bytes`, and removes them from it. Also sends what waits from earlier calls.
    Result send(std::string_view& bytes) { return m_wire.send(bytes); }
    /// Whether to call `send` when the socket has room; `hasMore` says whether there are bytes for it.
    bool wantsToWrite(bool hasMore) const { return m_wire.wantsToWrite(hasMore); }
    bool wantsToRead() const { return m_wire.wantsToRead(); }
    /// Appends what was received to `heard`.
    Result receive(std::string& heard) { return m_wire.receive(heard, 4096); }
    /// Tells the server that nothing more will come.
    void endOutput() { m_wire.endOutput(); }
    const std::string& reason() const { return m_wire.reason(); }

private:
    Link(std::unique_ptr<vx::net::TcpClientSocket2> socket, const vxtools::TlsContext* tls);
    /// As `open`.
    bool shakeHands(const Wait& wait, std::string& reason);

    std::unique_ptr<vx::net::TcpClientSocket2> m_socket;
    vxtools::Wire m_wire;
};

} // namespace vxlog
