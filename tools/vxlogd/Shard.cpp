#include "Shard.h"

#include "Complaint.h"

#include <vx/Describe.h>

#include <algorithm>
#include <array>
#include <exception>
#include <new>
#include <optional>
#include <sys/time.h>
#include <utility>

namespace vxlogd {

namespace {

using vx::net::TcpWorkerSocket2;

/// The sockets of one set for `select`. Ready sockets keep their index.
class SocketSet {
public:
    void add(TcpWorkerSocket2* socket) { m_sockets[m_count++] = socket; }
    TcpWorkerSocket2** data() { return m_sockets.data(); }
    std::uint32_t* count() { return &m_count; }
    bool has(const TcpWorkerSocket2* socket) const
    {
        for (const TcpWorkerSocket2* each : m_sockets) {
            if (each == socket)
                return true;
        }
        return false;
    }

private:
    std::array<TcpWorkerSocket2*, Shard::MOST_CONNECTIONS + 1> m_sockets {};
    std::uint32_t m_count = 0;
};

/// False, with a message, if the connection has to be dropped.
template <class Work>
bool succeeds(Work&& work)
{
    try {
        try {
            work();
            return true;
        } catch (const vx::Exception& failure) {
            complain("a connection is dropped: " + vx::explain(failure).toUtf8());
        } catch (const std::exception& failure) {
            complain(std::string("a connection is dropped: ") + failure.what());
        }
    } catch (const std::bad_alloc&) { // there is no memory for a message
    }
    return false;
}

} // namespace

Shard::Shard(Intake& intake, const Limits& limits)
    : m_intake(intake)
    , m_limits(limits)
    , m_waker(std::make_shared<Waker>())
{
    ENUM_VX_E_SOCKET status = VX_E_SOCKET_OK;
    m_wakeSocket = std::make_unique<TcpWorkerSocket2>(m_waker->takeSocket(), &status);
    m_connections.reserve(MOST_CONNECTIONS);
}

Shard::~Shard() noexcept = default;

void Shard::add(std::unique_ptr<TcpWorkerSocket2> socket)
{
    {
        const std::lock_guard lock(m_lock);
        m_new.push_back(std::move(socket));
        ++m_size;
    }
    m_waker->wake();
}

void Shard::stop()
{
    m_isStopping = true;
    m_waker->wake();
}

void* Shard::run()
{
    constexpr std::chrono::seconds PATIENCE(10); // with connections that neither send nor receive any more

    std::optional<Clock::time_point> stopped;
    for (;;) {
        takeOver();
        if (m_isStopping && !stopped)
            stopped = Clock::now();
        for (std::size_t index = m_connections.size(); index-- > 0;) {
            if (m_connections[index]->isOver())
                drop(index);
        }
        const auto isStuck = [&, now = Clock::now()](const auto& connection) {
            return now - std::max(*stopped, connection->lastSign()) >= PATIENCE;
        };
        if (stopped && std::all_of(m_connections.begin(), m_connections.end(), isStuck)) {
            m_connections.clear();
            return nullptr;
        }
        wait();
    }
}

void Shard::takeOver()
{
    std::vector<std::unique_ptr<TcpWorkerSocket2>> taken;
    {
        const std::lock_guard lock(m_lock);
        taken.swap(m_new);
    }
    for (std::unique_ptr<TcpWorkerSocket2>& socket : taken) {
        if (!succeeds([&] {
                m_connections.push_back(std::make_unique<Connection>(std::move(socket), m_intake, m_limits, m_waker));
            }))
            --m_size;
    }
}

void Shard::wait()
{
    SocketSet readers;
    SocketSet writers;
    readers.add(m_wakeSocket.get());
    for (const auto& connection : m_connections) {
        if (connection->wantsToRead())
            readers.add(connection->getSocket());
        if (connection->wantsToWrite())
            writers.add(connection->getSocket());
    }
    std::uint32_t none = 0;
    std::int32_t ready = 0;
    const timeval second {1, 0};
    const timeval moment {0, 50'000};
    const ENUM_VX_E_SOCKET result
        = TcpWorkerSocket2::select(readers.data(), readers.count(), writers.data(), writers.count(), nullptr, &none,
            m_isStopping                ? &moment
                : m_connections.empty() ? nullptr
                                        : &second,
            &ready);
    const bool isAnyReady = result == VX_E_SOCKET_OK && ready > 0;
    if (isAnyReady && readers.has(m_wakeSocket.get())) {
        char byte;
        std::int32_t count = 0;
        m_waker->hear();
        m_wakeSocket->recv(&byte, 1, 0, &count);
    }
    for (std::size_t index = m_connections.size(); index-- > 0;) {
        Connection& connection = *m_connections[index];
        if (!succeeds([&] {
                serve(connection, isAnyReady && readers.has(connection.getSocket()),
                    isAnyReady && writers.has(connection.getSocket()));
            }))
            drop(index);
    }
}

void Shard::serve(Connection& connection, bool isReadable, bool isWritable)
{
    if (isWritable && connection.wantsToWrite())
        connection.write();
    if (m_isStopping || connection.isFinishing())
        connection.finish();
    else if (isReadable && connection.wantsToRead())
        connection.read();
    connection.goOn();
    connection.endIfSilent(Clock::now());
}

void Shard::drop(std::size_t index)
{
    m_connections.erase(m_connections.begin() + static_cast<std::ptrdiff_t>(index));
    --m_size;
}

} // namespace vxlogd
