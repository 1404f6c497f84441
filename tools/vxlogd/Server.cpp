#include "Server.h"

#include "Complaint.h"
#include "Shard.h"

#include <vx/Describe.h>
#include <vx/net/SocketResult.h>
#include <vx/net/TcpClientSocket2.h>

#include <algorithm>
#include <condition_variable>
#include <csignal>
#include <pthread.h>
#include <stdexcept>
#include <sys/socket.h>
#include <thread>

namespace vxlogd {

namespace {

using vx::net::TcpServerSocket2;
using vx::net::TcpWorkerSocket2;

constexpr std::string_view ALL_ADDRESSES = "*";

void check(ENUM_VX_E_SOCKET result, const std::string& what)
{
    if (result != VX_E_SOCKET_OK)
        throw std::runtime_error(what + ": " + vx::String(VXGetDescriptionFromVX_E_SOCKET(result)).toUtf8());
}

/// A port that is free at the moment, to be used for all addresses.
unsigned short findFreePort()
{
    vx::net::TcpClientSocket2* socket = nullptr;
    check(vx::net::TcpClientSocket2::createTcpClientSocket2(AF_INET, SOCK_STREAM, 0, &socket), "a free port");
    const std::unique_ptr<vx::net::TcpClientSocket2> owner(socket);
    vx_sockaddr_union address {};
    address.in4.sin_family = AF_INET;
    address.in4.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    check(socket->bind(&address, sizeof address.in4), "a free port");
    int length = sizeof address;
    check(socket->getLocalAddress(&address, &length), "a free port");
    return ntohs(address.in4.sin_port);
}

/// As many as the machine runs at once.
std::size_t mostThreads()
{
    constexpr unsigned int LEAST = 1, MOST = 8;
    return std::clamp(std::thread::hardware_concurrency(), LEAST, MOST);
}

} // namespace

/// The thread that waits for connections. A signal that only this thread receives interrupts the wait.
class Acceptor final : public vx::Object, public vx::exec::IRunnable {
public:
    explicit Acceptor(Server& server)
        : m_server(server)
    {
    }

    VX_OBJECT_UNKNOWN(vx::Object)

    // IRunnable
    void* run() override
    {
        {
            const std::lock_guard lock(m_lock);
            m_thread = ::pthread_self();
            m_runs = true;
        }
        m_changed.notify_all();
        m_server.acceptAll();
        const std::lock_guard lock(m_lock);
        m_runs = false;
        m_changed.notify_all();
        return nullptr;
    }

    void waitUntilItRuns()
    {
        std::unique_lock lock(m_lock);
        m_changed.wait(lock, [&] { return m_runs; });
    }

    /// Sends the signal until it takes effect: one that arrives before the wait begins is lost.
    void end()
    {
        constexpr std::chrono::milliseconds PAUSE(20);
        std::unique_lock lock(m_lock);
        do
            if (m_runs)
                ::pthread_kill(m_thread, SIGUSR1);
        while (!m_changed.wait_for(lock, PAUSE, [&] { return !m_runs; }));
    }

private:
    Server& m_server;
    std::mutex m_lock;
    std::condition_variable m_changed;
    pthread_t m_thread {};
    bool m_runs = false;
};

std::unique_ptr<TcpServerSocket2> listenAt(const Settings& settings)
{
    TcpServerSocket2* made = nullptr;
    check(TcpServerSocket2::createTcpServerSocket2(AF_UNSPEC, SOCK_STREAM, 0, &made), "a socket");
    std::unique_ptr<TcpServerSocket2> socket(made);
    const std::string place = settings.listen + " port " + std::to_string(settings.port);
    const unsigned short port = settings.port != 0 ? settings.port : findFreePort();
    if (settings.listen == ALL_ADDRESSES)
        check(socket->bindListAddAddrAny(port), place);
    else
        check(socket->bindListAddAddrInfo(settings.listen.c_str(), nullptr, port), place);
    socket->setReuseAddress(true); // connections of a killed server keep the port in use for some time
    check(socket->bind(), place);
    check(socket->listen(0), place);
    check(socket->saveBoundAddresses(), place);
    return socket;
}

std::shared_ptr<const vxtools::TlsContext> openTls(const Settings& settings)
{
    if (settings.tls.certificate.empty())
        return nullptr;
    return std::make_shared<const vxtools::TlsContext>(vxtools::TlsContext::forServer(settings.tls));
}

Server::Server(const Settings& settings, std::unique_ptr<TcpServerSocket2> socket)
    : m_log(new LogFile(settings, [this] { wakeAll(); }))
    , m_intake(*m_log, settings.workers)
    , m_socket(std::move(socket))
{
    m_limits.setTls(openTls(settings));
    setLimits(settings);
}

Server::~Server() = default;

std::string Server::getAddresses()
{
    char text[2048];
    std::uint32_t length = sizeof text;
    check(m_socket->boundListAddressesDiagnosticStrA(text, &length), "the addresses");
    return text;
}

void Server::start()
{
    m_services.reserve(mostThreads());
    m_acceptor = new Acceptor(*this);
    m_acceptorThread = std::make_unique<vx::exec::Thread>(m_acceptor.get(), u"vxlogd accept");
    m_acceptorThread->start();
    m_acceptor->waitUntilItRuns();
}

void Server::change(const Settings& settings)
{
    std::shared_ptr<const vxtools::TlsContext> tls = openTls(settings);
    m_log->reopen(settings);
    m_limits.setTls(std::move(tls));
    setLimits(settings);
}

std::uint64_t Server::stop()
{
    m_isStopping = true;
    m_acceptor->end();
    m_acceptorThread->join();
    m_socket->close();
    for (const Service& service : m_services)
        service.shard->stop();
    for (const Service& service : m_services)
        service.thread->join();
    m_log->giveUp();
    m_intake.waitUntilDone();
    m_log->close();
    return m_log->getLost();
}

Counts Server::getCounts() const
{
    Counts counts {};
    {
        const std::lock_guard lock(m_servicesLock);
        for (const Service& service : m_services)
            counts.connections += service.shard->getSize();
    }
    counts.accepted = m_accepted;
    counts.turnedAway = m_turnedAway;
    counts.written = m_log->getWritten();
    counts.lost = m_log->getLost();
    const Backlog::Size queue = m_log->getBacklog().getSize();
    counts.queuedLines = queue.lines;
    counts.queuedBytes = queue.bytes;
    if (const std::shared_ptr<const std::string> trouble = m_log->getTrouble())
        counts.trouble = *trouble;
    counts.path = m_log->getPath();
    return counts;
}

void Server::wakeAll()
{
    const std::lock_guard lock(m_servicesLock);
    for (const Service& service : m_services)
        service.shard->wake();
}

void Server::setLimits(const Settings& settings)
{
    m_limits.level = settings.level;
    m_limits.maxLine = settings.maxLine;
    m_limits.idleSeconds = settings.idleSeconds;
    m_limits.maxConnections = settings.maxConnections;
}

void Server::acceptAll()
{
    constexpr unsigned int PAUSE = 100; // until a descriptor may be free again
    sigset_t wakeUp;
    sigemptyset(&wakeUp);
    sigaddset(&wakeUp, SIGUSR1);
    ::pthread_sigmask(SIG_UNBLOCK, &wakeUp, nullptr);

    bool isFailing = false;
    while (!m_isStopping) {
        TcpWorkerSocket2* accepted = nullptr;
        const ENUM_VX_E_SOCKET result = m_socket->accept(&accepted);
        std::unique_ptr<TcpWorkerSocket2> socket(accepted);
        try {
            if (socket != nullptr) {
                serve(std::move(socket));
                isFailing = false;
            } else if (result != VX_E_SOCKET_OK && result != VX_E_SOCKET_EINTR) {
                check(result, "a connection");
            }
        } catch (const std::exception& failure) {
            if (!std::exchange(isFailing, true))
                complain(failure.what());
            vx::exec::Thread::sleep(PAUSE);
        } catch (const vx::Exception& failure) {
            if (!std::exchange(isFailing, true))
                complain(vx::explain(failure).toUtf8());
            vx::exec::Thread::sleep(PAUSE);
        }
    }
}

void Server::serve(std::unique_ptr<TcpWorkerSocket2> socket)
{
    const std::lock_guard lock(m_servicesLock);
    std::size_t all = 0;
    Service* least = nullptr;
    for (Service& service : m_services) {
        const std::size_t size = service.shard->getSize();
        all += size;
        if (least == nullptr || size < least->shard->getSize())
            least = &service;
    }
    ++m_accepted;
    if (all >= m_limits.maxConnections) {
        ++m_turnedAway;
        if (!std::exchange(m_isTurningAway, true))
            complain(
                "connections are turned away, because max-connections is " + std::to_string(m_limits.maxConnections));
        return; // closes it
    }
    if (all < m_limits.maxConnections - m_limits.maxConnections / 10)
        m_isTurningAway = false;
    if (least == nullptr || (least->shard->getSize() > 0 && m_services.size() < mostThreads())) {
        Service service {new Shard(m_intake, m_limits), nullptr};
        service.thread = std::make_unique<vx::exec::Thread>(service.shard.get(), u"vxlogd serve");
        service.thread->start();
        m_services.push_back(std::move(service));
        least = &m_services.back();
    }
    least->shard->add(std::move(socket));
}

} // namespace vxlogd
