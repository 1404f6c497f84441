#pragma once

#include "common/Messages.h"

#include <vx/String.h>
#include <vx/net/TcpClientSocket2.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace vxlog {

/// The destination of the lines, given as a URI: vxlog://HOST:PORT?level=3&ack=1.
struct Destination {
    std::string host;
    unsigned short port = 7514;
    std::optional<int> level;
    bool wantsAnswers = false;
};

/// Throws UsageError that says what is wrong with the URI.
Destination parseDestination(const std::string& text);

/// Sends lines to a vxlogd. Throws a Failure that names the server.
class Sender {
public:
    explicit Sender(const Destination& destination);

    void send(const vx::String& line);
    /// Returns when the server has accepted all lines and, if the URI requires it, has confirmed that they are in its
    /// log.
    void finish();
    bool hasFailed() const noexcept { return m_hasFailed; }

private:
    void connect(const Destination& destination);
    void flush();
    /// Reads the answers of the server until it ends the connection.
    std::string hearAll();
    [[noreturn]] void fail(const vxtools::Text& why);

    std::string m_name;
    bool m_wantsAnswers;
    std::unique_ptr<vx::net::TcpClientSocket2> m_socket;
    std::string m_waiting;
    std::uint64_t m_lines = 0;
    bool m_hasFailed = false;
};

} // namespace vxlog
