#include "vx/net/TcpServer.h"

#include "vx/Exception.h"
#include "vx/Result.h"
#include "vx/ThreadAnnotations.h"
#include "vx/detail/Hidden.h"
#include "vx/net/SocketPoller.h"
#include "vx/net/detail/Listeners.h"
#include "vx/net/detail/NativeResult.h"
#include "vx/sync/Condition.h"
#include "vx/sync/detail/WaitUntil.h"
#include "vxsys/Lock.h"
#include "vxsys/Process.h"
#include "vxsys/Socket.h"
#include "vxsys/Thread.h"
#include "vxsys/detail/Deadline.h"

#include <algorithm>
#include <atomic>
#include <iterator>
#include <list>
#include <sys/socket.h>
#include <utility>

namespace vx::net {

using vxsys::detail::Deadline;

namespace {

void join(VXThreadHandle thread)
{
    void* result = nullptr;
    VXThreadJoin(thread, &result);
}

} // namespace

TcpConnection::TcpConnection(Reference<TcpSocketHandle> handle, const String& peer)
    : TcpSocket(std::move(handle))
    , m_peer(peer)
{
}

TcpConnection::~TcpConnection() noexcept(false) = default;

class VX_HIDDEN TcpServer::Core {
public:
    Core(Settings settings, Handler handler);
    ~Core();
    Core(const Core&) = delete;
    Core& operator=(const Core&) = delete;

    std::uint16_t getPort() const { return m_listeners.port; }
    const std::vector<String>& getAddresses() const { return m_listeners.addresses; }
    std::size_t getConnectionCount() const;
    std::size_t getFailureCount() const { return m_failures; }
    std::size_t stop(std::uint32_t milliseconds);

private:
    /// A connection and the thread of its handler.
    struct Session {
        Core& core;
        Reference<TcpConnection> connection; ///< null when the handler has returned
        const unsigned int socket; ///< open as long as there is a connection
        VXThreadHandle thread = VX_THREAD_INVALID_HANDLE;
        std::uint32_t threadId = 0; ///< 0: it has not begun
        bool isInStop = false; ///< the handler waits in `stop`
        bool isCut = false;
        bool hasEnded = false;
    };
    class SessionEnd;

    static void* runAcceptor(void* core);
    static void* runSession(void* argument);
    void acceptAll();
    void listenTo(std::uint32_t interest);
    /// Returns false if the connection has been closed meanwhile. Throws if the system has no room for it.
    bool acceptFrom(std::size_t listener);
    void startSession(const Reference<TcpSocketHandle>& handle, const String& peer);
    void joinEnded();
    void tell(const std::exception_ptr& failure, const String& peer) noexcept;

    /// False in a child process by `fork`, which has none of the threads, and perhaps the lock of one.
    bool isOfThisProcess() const noexcept { return m_process == VXProcessGetID(); }
    bool isStopping() const;
    bool hasRoom() const;
    /// Whether the calling thread belongs to this server. Such a thread does not wait for another one that is in
    /// `stop`.
    bool markInStop(std::uint32_t threadId, bool isInStop) VX_REQUIRES(m_changed);
    bool haveOthersEnded(std::uint32_t threadId, bool isOurs) const VX_REQUIRES(m_changed);
    /// Leaves out the sessions that are in `stop`.
    std::size_t cutOthers(std::uint32_t threadId) VX_REQUIRES(m_changed);

    const Settings m_settings;
    const Handler m_handler;
    detail::Listeners m_listeners; ///< the sockets belong to the acceptor
    std::uint32_t m_interest = SocketPoller::READ;
    ENUM_VX_E_SOCKET m_pollerStatus = VX_E_SOCKET_OK;
    SocketPoller m_poller {&m_pollerStatus};
    const std::uint32_t m_process = VXProcessGetID();
    std::atomic<std::size_t> m_failures = 0;
    VXThreadHandle m_acceptor = VX_THREAD_INVALID_HANDLE;

    mutable sync::Condition m_changed;
    std::list<Session> m_sessions VX_GUARDED_BY(m_changed);
    std::size_t m_running VX_GUARDED_BY(m_changed) = 0;
    std::uint32_t m_acceptorId VX_GUARDED_BY(m_changed) = 0;
    bool m_accepts VX_GUARDED_BY(m_changed) = true;
    bool m_isAcceptorInStop VX_GUARDED_BY(m_changed) = false;
    bool m_isStopping VX_GUARDED_BY(m_changed) = false;
};

/// Ends a session, however its handler ends.
class TcpServer::Core::SessionEnd {
public:
    explicit SessionEnd(Session& session)
        : m_session(session)
    {
        const sync::Condition::Holder holder(session.core.m_changed);
        session.threadId = VXThreadGetCurrentId();
    }
    ~SessionEnd()
    {
        Core& core = m_session.core;
        Reference<TcpConnection> connection;
        {
            const sync::Condition::Holder holder(core.m_changed);
            connection.swap(m_session.connection);
        }
        connection = nullptr; // closed before the session counts as ended
        {
            const sync::Condition::Holder holder(core.m_changed);
            m_session.hasEnded = true;
            --core.m_running;
            core.m_changed.broadcast();
        }
        core.m_poller.wake();
    }
    SessionEnd(const SessionEnd&) = delete;
    SessionEnd& operator=(const SessionEnd&) = delete;

private:
    Session& m_session;
};

TcpServer::Core::Core(Settings settings, Handler handler)
    : m_settings(std::move(settings))
    , m_handler(std::move(handler))
    , m_listeners(detail::listenOn(m_settings.hosts, m_settings.port))
{
    throwIfFailed(m_pollerStatus);
    for (std::size_t index = 0; index < m_listeners.sockets.size(); ++index)
        throwIfFailed(m_poller.add(m_listeners.sockets[index]->getSocket(), SocketPoller::READ, index));
    std::uint32_t id = 0;
    throwIfFailed(VXThreadCreate(runAcceptor, this, 0, 0, &m_acceptor, &id));
}

TcpServer::Core::~Core()
{
    if (!isOfThisProcess())
        return;
    stop(0);
    join(m_acceptor);
    joinEnded();
}

std::size_t TcpServer::Core::getConnectionCount() const
{
    const sync::Condition::Holder holder(m_changed);
    return m_running;
}

std::size_t TcpServer::Core::stop(std::uint32_t milliseconds)
{
    if (!isOfThisProcess())
        return 0;
    const Deadline end = Deadline::in(milliseconds);
    const std::uint32_t self = VXThreadGetCurrentId();
    const sync::Condition::Holder holder(m_changed);
    m_isStopping = true;
    m_poller.wake();
    const bool isOurs = markInStop(self, true);
    while (m_accepts && m_acceptorId != self && !(isOurs && m_isAcceptorInStop))
        m_changed.wait();
    while (!haveOthersEnded(self, isOurs) && sync::detail::waitUntil(m_changed, end)) { }
    std::size_t cut = cutOthers(self);
    while (!haveOthersEnded(self, isOurs)) {
        m_changed.wait();
        cut += cutOthers(self);
    }
    markInStop(self, false);
    return cut;
}

void* TcpServer::Core::runAcceptor(void* core)
{
    static_cast<Core*>(core)->acceptAll();
    return nullptr;
}

void* TcpServer::Core::runSession(void* argument)
{
    auto& session = *static_cast<Session*>(argument);
    const SessionEnd end(session);
    try {
        session.core.m_handler(*session.connection);
    } catch (...) {
        vxsys::passForcedUnwind();
        session.core.tell(std::current_exception(), session.connection->getPeer());
    }
    return nullptr;
}

void TcpServer::Core::acceptAll()
{
    constexpr std::uint32_t PAUSE = 100; // until a descriptor or memory may be free again
    {
        const sync::Condition::Holder holder(m_changed);
        m_acceptorId = VXThreadGetCurrentId();
    }
    std::uint32_t limit = VX_WAIT_FOREVER;
    bool isFailing = false;
    while (!isStopping()) {
        joinEnded();
        listenTo(limit == VX_WAIT_FOREVER && hasRoom() ? SocketPoller::READ : 0);
        SocketPoller::Event event {};
        std::size_t count = 0;
        m_poller.wait({&event, 1}, limit, &count);
        limit = VX_WAIT_FOREVER;
        if (count == 0)
            continue;
        try {
            if (acceptFrom(event.id))
                isFailing = false;
            continue;
        } catch (...) {
            vxsys::passForcedUnwind();
            if (!std::exchange(isFailing, true))
                tell(std::current_exception(), String());
        }
        limit = PAUSE;
    }
    for (const Reference<TcpSocketHandle>& socket : m_listeners.sockets)
        m_poller.remove(socket->getSocket());
    m_listeners.sockets.clear();
    const sync::Condition::Holder holder(m_changed);
    m_accepts = false;
    m_changed.broadcast();
}

void TcpServer::Core::listenTo(std::uint32_t interest)
{
    if (std::exchange(m_interest, interest) == interest)
        return;
    for (std::size_t index = 0; index < m_listeners.sockets.size(); ++index)
        m_poller.change(m_listeners.sockets[index]->getSocket(), interest, index);
}

bool TcpServer::Core::acceptFrom(std::size_t listener)
{
    vx_sockaddr_union peer {};
    std::uint32_t length = sizeof peer;
    unsigned int socket = VX_SOCKET_INVALID;
    const ENUM_VX_E_SOCKET result
        = detail::resultOf(VXSocketAccept(m_listeners.sockets[listener]->getSocket(), &peer.generic, &length, &socket));
    if (result == VX_E_SOCKET_EWOULDBLOCK || result == VX_E_SOCKET_ECONNABORTED || result == VX_E_SOCKET_EINTR)
        return false;
    if (result != VX_E_SOCKET_OK)
        throw ResultException(result, u"accept a connection on " + m_listeners.addresses[listener]);
    const Reference<TcpSocketHandle> owner = TcpSocketHandle::own(socket); // until the session has it
    startSession(owner, detail::textOf(peer));
    return true;
}

void TcpServer::Core::startSession(const Reference<TcpSocketHandle>& handle, const String& peer)
{
    Reference<TcpConnection> connection(new TcpConnection(handle, peer));
    if (m_settings.timeout > 0) {
        connection->setSoTimeout(m_settings.timeout);
        connection->setWriteTimeout(m_settings.timeout);
    }
    Session* session = nullptr;
    {
        const sync::Condition::Holder holder(m_changed);
        session = &m_sessions.emplace_back(Session {*this, std::move(connection), handle->getSocket()});
        ++m_running;
    }
    std::uint32_t id = 0;
    const std::int32_t result = VXThreadCreate(runSession, session, 0, 0, &session->thread, &id);
    if (result >= 0)
        return;
    {
        const sync::Condition::Holder holder(m_changed);
        m_sessions.pop_back();
        --m_running;
        m_changed.broadcast();
    }
    throw ResultException(result, u"start a thread for " + peer);
}

void TcpServer::Core::joinEnded()
{
    std::list<Session> ended;
    {
        const sync::Condition::Holder holder(m_changed);
        for (auto session = m_sessions.begin(); session != m_sessions.end();) {
            const auto next = std::next(session);
            if (session->hasEnded)
                ended.splice(ended.end(), m_sessions, session);
            session = next;
        }
    }
    for (const Session& session : ended)
        join(session.thread);
}

void TcpServer::Core::tell(const std::exception_ptr& failure, const String& peer) noexcept
{
    ++m_failures;
    try {
        if (m_settings.onFailure)
            m_settings.onFailure(failure, peer);
    } catch (...) { // there is no function to report it to
    }
}

bool TcpServer::Core::isStopping() const
{
    const sync::Condition::Holder holder(m_changed);
    return m_isStopping;
}

bool TcpServer::Core::hasRoom() const
{
    const sync::Condition::Holder holder(m_changed);
    return m_running < std::max<std::size_t>(m_settings.mostConnections, 1);
}

bool TcpServer::Core::markInStop(std::uint32_t threadId, bool isInStop)
{
    bool isOurs = m_acceptorId == threadId;
    if (isOurs)
        m_isAcceptorInStop = isInStop;
    for (Session& session : m_sessions) {
        if (session.hasEnded || session.threadId != threadId)
            continue;
        session.isInStop = isInStop;
        isOurs = true;
    }
    m_changed.broadcast();
    return isOurs;
}

bool TcpServer::Core::haveOthersEnded(std::uint32_t threadId, bool isOurs) const
{
    return std::all_of(m_sessions.begin(), m_sessions.end(), [&](const Session& session) {
        return session.hasEnded || session.threadId == threadId || (isOurs && session.isInStop);
    });
}

std::size_t TcpServer::Core::cutOthers(std::uint32_t threadId)
{
    std::size_t cut = 0;
    for (Session& session : m_sessions) {
        if (session.connection == nullptr || session.isInStop || session.isCut || session.threadId == threadId)
            continue;
        VXSocketShutdown(session.socket, SHUT_RDWR);
        session.isCut = true;
        ++cut;
    }
    return cut;
}

TcpServer::TcpServer(Settings settings, Handler handler)
    : m_core(std::make_unique<Core>(std::move(settings), std::move(handler)))
{
}

TcpServer::~TcpServer() = default;

std::uint16_t TcpServer::getPort() const
{
    return m_core->getPort();
}

const std::vector<String>& TcpServer::getAddresses() const
{
    return m_core->getAddresses();
}

std::size_t TcpServer::getConnectionCount() const
{
    return m_core->getConnectionCount();
}

std::size_t TcpServer::getFailureCount() const
{
    return m_core->getFailureCount();
}

std::size_t TcpServer::stop(std::uint32_t milliseconds)
{
    return m_core->stop(milliseconds);
}

} // namespace vx::net
