#pragma once

#include "vx/String.h"
#include "vx/net/TcpSocket.h"

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace vx::net {

/// A connection that a TcpServer has accepted.
class VX_API TcpConnection : public TcpSocket {
public:
    ~TcpConnection() noexcept(false) override;

    /// "192.0.2.1:50123" or "[::1]:50123".
    const String& getPeer() const { return m_peer; }

private:
    friend class TcpServer;

    TcpConnection(Reference<TcpSocketHandle> handle, const String& peer);

    const String m_peer;
};

/// Listens on its addresses. Each connection gets a new thread, which calls the handler. Connections beyond the limit
/// wait in the queue of the system until another connection has ended.
///
/// All operations may be called from any thread, and from a handler. A handler must not destroy the server. In a child
/// process by `fork` there is no server: `stop` and the destructor do not wait.
///
/// @code
/// net::TcpServer server({.hosts = {"127.0.0.1"}}, [](net::TcpSocket& client) {
///     client.getOutputStream()->write(reinterpret_cast<const signed char*>("hello"), 5);
/// });
/// net::TcpSocket socket(u"127.0.0.1", server.getPort());
/// signed char text[8];
/// assert(socket.getInputStream()->read(text, sizeof text) == 5 && text[0] == 'h');
/// assert(server.stop(1000) == 0);
/// @endcode
class VX_API TcpServer {
public:
    /// Takes a callable with the arguments `(failure, peer)` or `(failure)`.
    class FailureReport : public std::function<void(const std::exception_ptr& failure, const String& peer)> {
    public:
        using function::function;
        FailureReport() = default;
        template <std::invocable<const std::exception_ptr&> Take>
        requires(!std::invocable<Take&, const std::exception_ptr&, const String&>) FailureReport(Take take)
        {
            std::function<void(const std::exception_ptr&)> report(std::move(take));
            if (report) // stays empty for a null pointer to a function
                function::operator=([report = std::move(report)](
                                        const std::exception_ptr& failure, const String&) { report(failure); });
        }
    };

    struct Settings {
        std::vector<std::string> hosts = {"localhost"}; ///< names or addresses; "*" is every address of the machine
        std::uint16_t port = 0; ///< 0: the system chooses one that is free on all addresses
        std::size_t mostConnections = 256; ///< at once; 0 counts as 1
        /// Called with what a handler has thrown and the peer of its connection, or with the reason why a connection
        /// could not be accepted and an empty text. Several threads may call it at the same time, and its exceptions
        /// are ignored. A lasting failure, such as too many open files, is reported once.
        FailureReport onFailure = {};
        /// Milliseconds that a read or a write of a connection waits for its peer before it throws io::TimeoutException.
        /// A handler may set others. 0: without a limit, so that a silent peer keeps its thread until `stop`.
        int timeout = 0;
    };

    /// The connection is closed when the handler returns, unless the handler has kept a reference to it.
    using Handler = std::function<void(TcpConnection& connection)>;

    /// Listens and accepts connections at once. Leaves out an address whose family the machine does not have. Throws
    /// ResultException if another address cannot be used or if there is none.
    TcpServer(Settings settings, Handler handler);
    TcpServer(const TcpServer&) = delete;
    TcpServer& operator=(const TcpServer&) = delete;
    /// Shuts down all connections, as `stop(0)` does, and waits for the threads.
    ~TcpServer();

    /// In host order; the same for all addresses.
    std::uint16_t getPort() const;
    /// "127.0.0.1:7514", "[::1]:7514".
    const std::vector<String>& getAddresses() const;
    /// The number of running handlers.
    std::size_t getConnectionCount() const;
    /// The number of failures that were reported to `onFailure`, or would be if there were one.
    std::size_t getFailureCount() const;

    /// Accepts no more connections and waits for the handlers to return. Connections that are still open after
    /// `milliseconds` are shut down in both directions, so that reads end and writes fail. Then `stop` waits again.
    /// Returns how many it has shut down. A handler that calls it waits neither for itself nor for another handler that
    /// has called it. May be called again.
    std::size_t stop(std::uint32_t milliseconds);

private:
    class Core;

    const std::unique_ptr<Core> m_core;
};

} // namespace vx::net
