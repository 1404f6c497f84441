#include "StatusSocket.h"

#include "Texts.h"
#include "common/Failure.h"
#include "common/LocalSocket.h"

#include <cerrno>
#include <optional>
#include <poll.h>
#include <string_view>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <sys/un.h>
#include <unistd.h>
#include <utility>

namespace vxlogd {

namespace {

using vxtools::Failure;

} // namespace

class Descriptor {
public:
    explicit Descriptor(int number)
        : m_number(number)
    {
    }
    ~Descriptor()
    {
        if (m_number != -1)
            ::close(m_number);
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    int get() const { return m_number; }
    int release() { return std::exchange(m_number, -1); }

private:
    int m_number;
};

namespace {

[[noreturn]] void fail(const std::string& path, int error)
{
    throw Failure(path, vxtools::textOfError(error));
}

int bindTo(int socket, const std::string& path)
{
    const sockaddr_un address = vxtools::localAddress(path);
    return ::bind(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0 ? 0 : errno;
}

std::optional<struct stat> socketAt(const std::string& path)
{
    struct stat status { };
    if (::lstat(path.c_str(), &status) == 0 && S_ISSOCK(status.st_mode))
        return status;
    return std::nullopt;
}

/// A client that is silent, or does not read, is dropped.
void limitTime(int socket)
{
    const timeval second {1, 0};
    ::setsockopt(socket, SOL_SOCKET, SO_RCVTIMEO, &second, sizeof second);
    ::setsockopt(socket, SOL_SOCKET, SO_SNDTIMEO, &second, sizeof second);
}

void sendAll(int socket, std::string_view text)
{
    while (!text.empty()) {
        const ssize_t count = ::send(socket, text.data(), text.size(), MSG_NOSIGNAL);
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 1)
            return;
        text.remove_prefix(static_cast<std::size_t>(count));
    }
}

} // namespace

StatusSocket::StatusSocket(const std::string& path)
    : m_path(path)
{
    constexpr mode_t USER_ONLY = 0600;
    constexpr int MOST_WAITING = 16;

    Descriptor socket(vxtools::openLocalSocket(path));
    ::fchmod(socket.get(), USER_ONLY); // the file of the socket gets this mode
    int error = bindTo(socket.get(), path);
    if (error == EADDRINUSE && socketAt(path)) {
        const Descriptor other(vxtools::openLocalSocket(path));
        if (vxtools::connectLocalSocket(other.get(), path) != ECONNREFUSED)
            throw Failure(path, SOCKET_IN_USE());
        ::unlink(path.c_str());
        error = bindTo(socket.get(), path);
    }
    if (error != 0)
        fail(path, error == EADDRINUSE ? EEXIST : error); // by what is no socket
    if (const auto status = socketAt(path)) {
        m_device = status->st_dev;
        m_inode = status->st_ino;
    }
    if (::listen(socket.get(), MOST_WAITING) != 0)
        fail(path, errno);
    m_socket = socket.release();
}

StatusSocket::~StatusSocket()
{
    m_isStopping = true;
    ::shutdown(m_socket, SHUT_RDWR); // ends the wait of the thread
    if (m_thread != nullptr)
        m_thread->join();
    ::close(m_socket);
    if (isAt(m_path))
        ::unlink(m_path.c_str());
}

bool StatusSocket::isAt(const std::string& path) const
{
    const auto status = socketAt(path);
    return status && status->st_dev == m_device && status->st_ino == m_inode;
}

void StatusSocket::start(Status& status, Tail& tail)
{
    m_senders = std::make_unique<TailSenders>(tail);
    auto thread = std::make_unique<vx::exec::Thread>([this, &status] { run(status); });
    thread->start();
    m_thread = std::move(thread);
}

void StatusSocket::run(Status& status)
{
    constexpr int SECOND = 1000;

    while (!m_isStopping) {
        pollfd waiting {m_socket, POLLIN, 0};
        const int ready = ::poll(&waiting, 1, SECOND);
        status.sample();
        if (ready != 1 || m_isStopping)
            continue;
        Descriptor client(::accept4(m_socket, nullptr, nullptr, SOCK_CLOEXEC));
        if (client.get() != -1)
            answer(client, status);
        else if (!m_isStopping)
            vx::exec::Thread::sleep(SECOND); // no descriptor is free, say
    }
}

void StatusSocket::answer(Descriptor& client, Status& status)
{
    limitTime(client.get());
    char bytes[64];
    const ssize_t count = ::recv(client.get(), bytes, sizeof bytes, 0);
    if (count < 0)
        return;
    std::string_view request(bytes, static_cast<std::size_t>(count));
    request = request.substr(0, request.find_first_of("\r\n"));
    if (request.empty() || request == "status")
        sendAll(client.get(), toText(status.gather()));
    else if (request == "metrics")
        sendAll(client.get(), toMetrics(status.gather()));
    else if (request != "tail" && request != "tail follow")
        sendAll(client.get(), "err the requests are status, metrics, tail and tail follow\n");
    else if (m_senders->start(client.get(), request != "tail"))
        client.release();
    else
        sendAll(client.get(), "err too many watch the log\n");
}

std::string askStatus(const std::string& path, const std::string& request)
{
    if (path.empty())
        throw Failure("status-socket", NO_STATUS_SOCKET());
    const Descriptor socket(vxtools::openLocalSocket(path));
    const int error = vxtools::connectLocalSocket(socket.get(), path);
    if (error == ENOENT || error == ECONNREFUSED)
        throw Failure(path, NO_SERVER());
    if (error != 0)
        fail(path, error);
    sendAll(socket.get(), request + "\n");
    std::string text;
    char bytes[4096];
    for (;;) {
        const ssize_t count = ::recv(socket.get(), bytes, sizeof bytes, 0);
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            fail(path, errno);
        if (count == 0)
            break;
        text.append(bytes, static_cast<std::size_t>(count));
    }
    if (text.empty())
        throw Failure(path, NO_ANSWER());
    return text;
}

} // namespace vxlogd
