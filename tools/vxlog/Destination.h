#pragma once

#include "common/Kafka.h"
#include "common/TlsContext.h"

#include <chrono>
#include <optional>
#include <string>

namespace vxlog {

/// The destination of the lines, given as a URI: vxlog://HOST:PORT?level=3&ack=1&beat=30&retry=60, or with vxlogs for a
/// connection with encryption; or kafka://HOST:PORT/TOPIC?level=3&retry=60 for the brokers of a cluster.
struct Destination {
    std::string host;
    unsigned short port = 7514;
    bool isEncrypted = false;
    vxtools::TlsFiles tls; ///< for encryption
    std::optional<vxtools::KafkaAddress> kafka; ///< instead of host and port
    std::optional<int> level;
    bool wantsAnswers = true;
    std::chrono::seconds beat {30}; ///< between signs of life of an idle client; 0 for none
    std::chrono::seconds retry {60}; ///< how long the server may be away
};

/// Throws UsageError that says what is wrong with the URI.
Destination parseDestination(const std::string& text);

/// "host:7514" or "[::1]:7514".
std::string nameOf(const Destination& destination);

} // namespace vxlog
