#include "Destination.h"

#include "Texts.h"
#include "common/Failure.h"

#include <vx/net/UriReference.h>

#include <algorithm>
#include <cctype>
#include <charconv>
#include <limits>
#include <string_view>
#include <utility>

namespace vxlog {

namespace {

using vxtools::UsageError;

/// The number of a parameter, whose name may be in any letter case; the last one of that name.
std::optional<int> numberIn(
    const vx::net::UriReference& uri, std::string_view name, int least = std::numeric_limits<int>::min())
{
    std::optional<int> number;
    for (const vx::net::UriReference::Parameter& each : uri.getParameters()) {
        if (!std::ranges::equal(name, each.name, {}, {}, [](unsigned char byte) { return std::tolower(byte); }))
            continue;
        const char* end = each.value.data() + each.value.size();
        const auto [stop, error] = std::from_chars(each.value.data(), end, number.emplace());
        if (error != std::errc() || stop != end || *number < least)
            throw UsageError(NO_PARAMETER(std::string(name), each.value));
    }
    return number;
}

} // namespace

Destination parseDestination(const std::string& text)
{
    if (vxtools::KafkaAddress::isOne(text)) {
        vxtools::KafkaAddress address(text, {"level", "retry"});
        Destination brokers;
        brokers.level = numberIn(address.uri(), "level");
        if (const std::optional<int> retry = numberIn(address.uri(), "retry", 0))
            brokers.retry = std::chrono::seconds(*retry);
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
    if ((uri.getScheme() != "vxlog" && !destination.isEncrypted) || destination.host.empty() || !isWhole)
        throw UsageError(NO_DESTINATION(text));
    if (!uri.getPortText().value_or("").empty()) {
        destination.port = uri.getPort().value_or(0);
        if (destination.port == 0)
            throw UsageError(NO_PORT(text));
    }
    destination.level = numberIn(uri, "level");
    destination.wantsAnswers = numberIn(uri, "ack").value_or(1) != 0;
    if (const std::optional<int> beat = numberIn(uri, "beat", 0))
        destination.beat = std::chrono::seconds(*beat);
    if (const std::optional<int> retry = numberIn(uri, "retry", 0))
        destination.retry = std::chrono::seconds(*retry);
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
