#pragma once

#include "Destination.h"

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

    /// Tries each address of the host. Null with a reason if none answers, and without one if `wait` gave up.
    static std::unique_ptr<Link> open(const Destination& destination, const Wait& wait, std::string& reason);

    int descriptor() const;
    enum class Result {
        DONE,
        LATER, ///< wait first
        CLOSED, ///< the server has ended the connection
        BROKEN ///< see `reason`
    };
    /// Sends the first bytes of `bytes`, and removes them from it.
    Result send(std::string_view& bytes);
    /// Appends what was received to `heard`.
    Result receive(std::string& heard);
    /// Tells the server that nothing more will come.
    void endOutput() { m_socket->shutdownOutput(); }
    const std::string& reason() const { return m_reason; }

private:
    explicit Link(std::unique_ptr<vx::net::TcpClientSocket2> socket);
    Result resultOf(ENUM_VX_E_SOCKET result);

    std::unique_ptr<vx::net::TcpClientSocket2> m_socket;
    std::string m_reason;
};

} // namespace vxlog
