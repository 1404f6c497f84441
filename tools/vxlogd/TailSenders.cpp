#include "TailSenders.h"

#include <cerrno>
#include <poll.h>
#include <string_view>
#include <sys/socket.h>
#include <system_error>
#include <thread>
#include <unistd.h>

namespace vxlogd {

namespace {

constexpr std::size_t MOST_CLIENTS = 16;
constexpr std::size_t ALL = SIZE_MAX;

/// Waits as long as the client needs. False if it has gone.
bool sendWhole(int socket, std::string_view text)
{
    while (!text.empty()) {
        const ssize_t count = ::send(socket, text.data(), text.size(), MSG_NOSIGNAL); // has a time limit
        if (count >= 0)
            text.remove_prefix(static_cast<std::size_t>(count));
        else if (errno != EINTR && errno != EAGAIN)
            return false;
    }
    return true;
}

bool isThere(int socket)
{
    pollfd state {socket, POLLRDHUP, 0};
    return ::poll(&state, 1, 0) == 0;
}

std::string textOf(const Tail::Portion& portion)
{
    std::string text;
    if (portion.missed > 0)
        text.append("{\"missed\":").append(std::to_string(portion.missed)).append("}\n");
    for (const Tail::Line& line : portion.lines)
        text.append(toJson(line, ALL)).append("\n");
    return text;
}

} // namespace

TailSenders::~TailSenders()
{
    m_tail.close();
    std::unique_lock lock(m_lock);
    for (const int client : m_clients)
        ::shutdown(client, SHUT_RDWR);
    m_changed.wait(lock, [&] { return m_clients.empty(); });
}

bool TailSenders::start(int client, bool follows)
{
    const std::lock_guard lock(m_lock);
    if (m_clients.size() >= MOST_CLIENTS)
        return false;
    m_clients.insert(client);
    try {
        std::thread([this, client, follows] {
            try {
                send(client, follows);
            } catch (const std::exception&) { // no memory: the connection ends
            }
            const std::lock_guard ending(m_lock);
            ::close(client);
            m_clients.erase(client);
            m_changed.notify_all();
        }).detach();
    } catch (const std::system_error&) { // the system has no thread left
        m_clients.erase(client);
        return false;
    }
    return true;
}

void TailSenders::send(int client, bool follows)
{
    constexpr std::chrono::seconds PATIENCE(1); // between two looks for a client that has gone
    constexpr std::size_t MOST_LINES = 50;

    const Tail::Watch watch(m_tail);
    Tail::Portion portion = m_tail.read(m_tail.begin(), ALL, std::chrono::seconds(0));
    portion.missed = 0;
    if (!sendWhole(client, std::to_string(portion.lines.size()) + "\n"))
        return;
    while (sendWhole(client, textOf(portion)) && follows && !m_tail.isClosed() && isThere(client))
        portion = m_tail.read(portion.next, MOST_LINES, PATIENCE);
}

} // namespace vxlogd
