#include "Connections.h"

#include <algorithm>
#include <arpa/inet.h>
#include <cerrno>
#include <poll.h>
#include <string_view>
#include <sys/socket.h>
#include <system_error>
#include <thread>

namespace vxlogd::http {

namespace {

constexpr std::size_t MOST_HEAD = 8192; ///< bytes of all headers
constexpr std::size_t MOST_LINE = 2048; ///< of one
constexpr std::chrono::seconds HEAD_TIME(5);
constexpr std::chrono::seconds WRITE_TIME(5);

/// The numeric address without a port; empty if it is not known.
std::string hostOf(const sockaddr_storage& address)
{
    char text[INET6_ADDRSTRLEN] = "";
    if (address.ss_family == AF_INET)
        ::inet_ntop(AF_INET, &reinterpret_cast<const sockaddr_in&>(address).sin_addr, text, sizeof text);
    else if (address.ss_family == AF_INET6)
        ::inet_ntop(AF_INET6, &reinterpret_cast<const sockaddr_in6&>(address).sin6_addr, text, sizeof text);
    constexpr std::string_view MAPPED = "::ffff:"; // an address of IPv4 at a socket for both
    return std::string(text).starts_with(MAPPED) ? text + MAPPED.size() : text;
}

bool hasLongLine(const std::string& head)
{
    std::size_t start = 0;
    for (std::size_t end = head.find('\n'); end != head.npos; start = end + 1, end = head.find('\n', start)) {
        if (end - start > MOST_LINE)
            return true;
    }
    return head.size() - start > MOST_LINE;
}

} // namespace

thread_local bool Connections::s_isRefused = false;

void Connections::enqueue(std::function<void()> serve)
{
    if (start(serve))
        return;
    s_isRefused = true; // the function closes the socket nevertheless
    serve();
    s_isRefused = false;
}

bool Connections::start(const std::function<void()>& serve)
{
    const std::lock_guard lock(m_lock);
    if (m_count >= m_most)
        return false;
    try {
        std::thread([this, serve] {
            serve();
            const std::lock_guard ending(m_lock);
            --m_count;
            m_changed.notify_all();
        }).detach();
    } catch (const std::system_error&) { // the system has no thread left
        return false;
    }
    ++m_count;
    return true;
}

void Connections::shutdown()
{
    std::unique_lock lock(m_lock);
    m_changed.wait(lock, [&] { return m_count == 0; });
}

Exchange::Exchange(int socket, int stop)
    : m_socket(socket)
    , m_stop(stop)
{
}

bool Exchange::waitFor(short event, Clock::time_point end) const
{
    for (;;) {
        const auto rest = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now()).count();
        pollfd waiting[] = {{m_socket, event, 0}, {m_stop, POLLIN, 0}};
        const int ready = ::poll(waiting, std::size(waiting), static_cast<int>(std::max<std::int64_t>(rest, 0)));
        if (ready < 0 && errno == EINTR)
            continue;
        return ready > 0 && waiting[1].revents == 0;
    }
}

Exchange::Head Exchange::readHead()
{
    const Clock::time_point end = Clock::now() + HEAD_TIME;
    while (m_head.find("\r\n\r\n") == m_head.npos) {
        char bytes[1024];
        if (!waitFor(POLLIN, end))
            return Head::NONE;
        const ssize_t count = ::recv(m_socket, bytes, sizeof bytes, MSG_DONTWAIT);
        if (count < 0 && (errno == EINTR || errno == EAGAIN))
            continue;
        if (count < 1)
            return Head::NONE;
        m_head.append(bytes, static_cast<std::size_t>(count));
        if (m_head.size() > MOST_HEAD || hasLongLine(m_head))
            return Head::TOO_LARGE;
    }
    return Head::COMPLETE;
}

ssize_t Exchange::read(char* bytes, std::size_t size)
{
    const std::size_t count = m_head.copy(bytes, size, m_position);
    m_position += count;
    return static_cast<ssize_t>(count);
}

ssize_t Exchange::write(const char* bytes, std::size_t size)
{
    const Clock::time_point end = Clock::now() + WRITE_TIME;
    while (waitFor(POLLOUT, end)) {
        const ssize_t count = ::send(m_socket, bytes, size, MSG_DONTWAIT | MSG_NOSIGNAL);
        if (count >= 0 || (errno != EINTR && errno != EAGAIN))
            return count;
    }
    return -1;
}

void Exchange::sendQuietly(const std::string& text)
{
    ::send(m_socket, text.data(), text.size(), MSG_DONTWAIT | MSG_NOSIGNAL);
}

bool Exchange::isOver() const
{
    pollfd states[] = {{m_socket, POLLRDHUP, 0}, {m_stop, POLLIN, 0}};
    return ::poll(states, std::size(states), 0) > 0;
}

void Exchange::get_remote_ip_and_port(std::string& ip, int& port) const
{
    sockaddr_storage address {};
    socklen_t length = sizeof address;
    if (::getpeername(m_socket, reinterpret_cast<sockaddr*>(&address), &length) == 0)
        ip = hostOf(address);
    port = 0;
}

void Exchange::get_local_ip_and_port(std::string& ip, int& port) const
{
    sockaddr_storage address {};
    socklen_t length = sizeof address;
    if (::getsockname(m_socket, reinterpret_cast<sockaddr*>(&address), &length) == 0)
        ip = hostOf(address);
    port = 0;
}

} // namespace vxlogd::http
