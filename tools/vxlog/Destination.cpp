#include "Destination.h"

#include "Texts.h"
#include "common/Failure.h"
#include "common/UriParameters.h"

#include <vx/net/UriReference.h>

#include <limits>
#include <string_view>
#include <utility>

namespace vxlog {

using vxtools::UriParameters;
using vxtools::UsageError;

namespace {

constexpr int MOST = std::numeric_limits<int>::max();

void setSeconds(std::chrono::seconds& target, const UriParameters& parameters, std::string_view name)
{
    if (const std::optional<int> seconds = parameters.findNumber(name, 0, MOST))
        target = std::chrono::seconds(*seconds);
}

std::optional<int> levelIn(const UriParameters& parameters)
{
    return parameters.findNumber("level", std::numeric_limits<int>::min(), MOST);
}

} // namespace

Destination parseDestination(const std::string& text)
{
    if (vxtools::KafkaAddress::isOne(text)) {
        vxtools::KafkaAddress address(text, {"level", "retry"});
        Destination brokers;
        brokers.level = levelIn(address.parameters());
        setSeconds(brokers.retry, address.parameters(), "retry");
        brokers.kafka = std::move(address);
        return brokers;
    }
    const std::optional<vx::net::UriReference> parsed = vx::net::UriReference::parse(std::string_view(text));
    const vx::net::UriReference uri = parsed ? parsed->normalized() : vx::net::UriReference();
    Destination destination;
    destination.host = uri.getHostName();
    const bool isWhole
        = destination.host.find('\0') == std::string::npos; // the system would look up the part before it
    destination.isEncrypted = uri.getScheme() == "vxlogs";
    const bool hasMore = uri.getUserInfo() || uri.getFragment() || (!uri.getPath().empty() && uri.getPath() != "/");
    if ((uri.getScheme() != "vxlog" && !destination.isEncrypted) || destination.host.empty() || !isWhole || hasMore)
        throw UsageError(NO_DESTINATION(text));
    if (!uri.getPortText().value_or("").empty()) {
        destination.port = uri.getPort().value_or(0);
        if (destination.port == 0)
            throw UsageError(NO_PORT(text));
    }
    const UriParameters parameters(text, uri, {"level", "ack", "beat", "retry"});
    destination.level = levelIn(parameters);
    destination.wantsAnswers = parameters.findNumber("ack", 0, 1).value_or(1) != 0;
    setSeconds(destination.beat, parameters, "beat");
    setSeconds(destination.retry, parameters, "retry");
    return destination;
}

std::string nameOf(const Destination& destination)
{
    if (destination.kafka)
        return destination.kafka->name();
    const bool isAddress = destination.host.find(':') != std::string::npos;
    return (isAddress ? "[" + destination.host + "]" : destination.host) + ":" + std::to_string(destination.port);
}

} // namespace vxlog
