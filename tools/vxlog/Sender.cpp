#include "Sender.h"

#include "Texts.h"
#include "common/Failure.h"

#include <vx/net/SocketResult.h>
#include <vx/net/UriReference.h>

#include <algorithm>
#include <cctype>
#include <charconv>
#include <netdb.h>
#include <netinet/in.h>
#include <string_view>
#include <sys/socket.h>

namespace vxlog {

namespace {

using vx::net::TcpClientSocket2;
using vxtools::Failure;
using vxtools::UsageError;

/// The number of a parameter, whose name may be in any letter case; the last one of that name.
std::optional<int> numberIn(const vx::net::UriReference& uri, std::string_view name)
{
    std::optional<int> number;
    for (const vx::net::UriReference::Parameter& each : uri.getParameters()) {
        if (!std::ranges::equal(name, each.name, {}, {}, [](unsigned char byte) { return std::tolower(byte); }))
            continue;
        const char* end = each.value.data() + each.value.size();
        const auto [stop, error] = std::from_chars(each.value.data(), end, number.emplace());
        if (error != std::errc() || stop != end)
            throw UsageError(NO_PARAMETER(std::string(name), each.value));
    }
    return number;
}

std::string textOf(ENUM_VX_E_SOCKET result)
{
    return vx::String(VXGetDescriptionFromVX_E_SOCKET(result)).toUtf8();
}

std::string nameOf(const Destination& destination)
{
    const bool isAddress = destination.host.find(':') != std::string::npos;
    return (isAddress ? "[" + destination.host + "]" : destination.host) + ":" + std::to_string(destination.port);
}

/// The reason that the server gave for ending the connection; empty if it gave none.
std::string reasonIn(const std::string& heard)
{
    constexpr std::string_view ERROR = "err ";
    const std::size_t error = heard.rfind(ERROR);
    if (error == heard.npos)
        return {};
    const std::size_t begin = error + ERROR.size();
    return heard.substr(begin, heard.find('\n', begin) - begin);
}

} // namespace

Destination parseDestination(const std::string& text)
{
    const std::optional<vx::net::UriReference> parsed = vx::net::UriReference::parse(std::string_view(text));
    const vx::net::UriReference uri = parsed ? parsed->normalized() : vx::net::UriReference();
    Destination destination;
    destination.host = uri.getHostName();
    const bool isWhole
        = destination.host.find('\0') == std::string::npos; // the system would look up the part before it
    if (uri.getScheme() != "vxlog" || destination.host.empty() || !isWhole)
        throw UsageError(NO_DESTINATION(text));
    if (!uri.getPortText().value_or("").empty()) {
        destination.port = uri.getPort().value_or(0);
        if (destination.port == 0)
            throw UsageError(NO_PORT(text));
    }
    destination.level = numberIn(uri, "level");
    destination.wantsAnswers = numberIn(uri, "ack").value_or(0) != 0;
    return destination;
}

Sender::Sender(const Destination& destination)
    : m_name(nameOf(destination))
    , m_wantsAnswers(destination.wantsAnswers)
{
    connect(destination);
    m_waiting
        = "VXLOG level=" + std::to_string(destination.level.value_or(0)) + " ack=" + (m_wantsAnswers ? "1\n" : "0\n");
}

void Sender::send(const vx::String& line)
{
    constexpr std::size_t BLOCK_SIZE = 64 * 1024;
    m_waiting += line.toUtf8();
    m_waiting += '\n';
    ++m_lines;
    if (m_waiting.size() >= BLOCK_SIZE)
        flush();
}

void Sender::finish()
{
    flush();
    if (const ENUM_VX_E_SOCKET result = m_socket->shutdownOutput(); result != VX_E_SOCKET_OK)
        fail(textOf(result));
    const std::string heard = hearAll();
    if (const std::string reason = reasonIn(heard); !reason.empty())
        fail(reason);
    if (!m_wantsAnswers || m_lines == 0)
        return;
    std::uint64_t answered = 0;
    if (const std::size_t last = heard.rfind("ack "); last != heard.npos && heard.ends_with('\n'))
        std::from_chars(heard.data() + last + 4, heard.data() + heard.size(), answered);
    if (answered != m_lines)
        fail(NOT_ACKNOWLEDGED(answered, m_lines));
}

void Sender::connect(const Destination& destination)
{
    addrinfo hints {};
    hints.ai_socktype = SOCK_STREAM;
    ENUM_VX_E_SOCKET result = VX_E_SOCKET_HOST_NOT_FOUND;
    for (std::uint32_t index = 0; m_socket == nullptr; ++index) {
        vx_sockaddr_union address {};
        const ENUM_VX_E_SOCKET found
            = vx::net::TcpSocket2::getAddrInfo(destination.host.c_str(), destination.port, &hints, index, &address);
        if (found != VX_E_SOCKET_OK)
            fail(textOf(index == 0 ? found : result));
        TcpClientSocket2* made = nullptr;
        result = TcpClientSocket2::createTcpClientSocket2(address.generic.sa_family, SOCK_STREAM, 0, &made);
        std::unique_ptr<TcpClientSocket2> socket(made);
        if (result == VX_E_SOCKET_OK)
            result = socket->connect(
                &address, address.generic.sa_family == AF_INET ? sizeof address.in4 : sizeof address.in6);
        if (result == VX_E_SOCKET_OK)
            m_socket = std::move(socket);
    }
}

void Sender::flush()
{
    const std::string waiting = std::move(m_waiting);
    m_waiting.clear();
    for (std::string_view rest = waiting; !rest.empty();) {
        std::int32_t count = 0;
        const ENUM_VX_E_SOCKET result = m_socket->send(rest.data(), static_cast<unsigned int>(rest.size()), 0, &count);
        if (result == VX_E_SOCKET_OK) {
            rest.remove_prefix(static_cast<std::size_t>(count));
        } else if (result != VX_E_SOCKET_EINTR) {
            const std::string reason = reasonIn(hearAll());
            fail(reason.empty() ? textOf(result) : reason);
        }
    }
}

std::string Sender::hearAll()
{
    constexpr std::size_t MOST = 4096; // only the last answers matter
    std::string heard;
    char piece[1024];
    for (;;) {
        std::int32_t count = 0;
        const ENUM_VX_E_SOCKET result = m_socket->recv(piece, sizeof piece, 0, &count);
        if (result == VX_E_SOCKET_EINTR)
            continue;
        if (result != VX_E_SOCKET_OK || count < 1)
            return heard;
        heard.append(piece, static_cast<std::size_t>(count));
        if (heard.size() > MOST)
            heard.erase(0, heard.size() - MOST / 2);
    }
}

void Sender::fail(const vxtools::Text& why)
{
    m_hasFailed = true;
    throw Failure(m_name, why);
}

} // namespace vxlog
