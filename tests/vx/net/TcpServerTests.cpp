#include "vx/net/TcpServer.h"

#include "tests/vx/Common.h"
#include "tests/vxsys/Child.h"
#include "vx/Describe.h"
#include "vx/net/SocketResult.h"
#include "vxsys/Lock.h"

#include <atomic>
#include <cerrno>
#include <dlfcn.h>
#include <mutex>
#include <pthread.h>
#include <set>
#include <stdexcept>
#include <sys/socket.h>
#include <thread>

namespace vx::net {
namespace {

const std::vector<std::string> LOOPBACK = {"127.0.0.1"};

/// A number on which threads wait.
class Count {
public:
    int add(int change)
    {
        const int value = m_value += change;
        m_value.notify_all();
        return value;
    }
    void waitFor(int value)
    {
        for (int now = m_value; now != value; now = m_value)
            m_value.wait(now);
    }

private:
    std::atomic<int> m_value {0};
};

/// Reads one byte: 1, or 0 at the end of the connection.
int readByte(TcpSocket& socket)
{
    signed char byte = 0;
    return std::max(socket.getInputStream()->read(&byte, 1), 0);
}

void sendByte(TcpSocket& socket)
{
    const signed char byte = 1;
    socket.getOutputStream()->write(&byte, 1);
}

std::unique_ptr<TcpSocket> connectTo(const TcpServer& server)
{
    return std::make_unique<TcpSocket>(u"127.0.0.1", server.getPort());
}

TEST(TcpServer, ListensOnAllAddressesAtOnePort)
{
    const auto ignore = [](TcpSocket&) {};
    {
        const TcpServer server({.hosts = {"127.0.0.1", "127.0.0.2", "127.0.0.1"}}, ignore);
        const String port = String::valueOf(server.getPort());
        EXPECT_EQ(server.getAddresses(), (std::vector<String> {u"127.0.0.1:" + port, u"127.0.0.2:" + port}));
        const auto again = [&](std::uint16_t other) {
            return saidBy<ResultException>([&] {
                TcpServer({.hosts = {"127.0.0.3", "127.0.0.2"}, .port = other}, ignore);
            });
        };
        const std::string failure = again(server.getPort());
        EXPECT_TRUE(failure.starts_with("listen on 127.0.0.2:" + port.toUtf8() + ": EADDRINUSE ")) << failure;
    }
    for (const std::vector<std::string>& hosts : {std::vector<std::string> {}, {std::string("127.0.0.1\0x", 11)},
             {"127.0.0.1", "no.such.host.invalid"}, {"192.0.2.1"}, {"\xC3"}})
        EXPECT_EQ(resultOf([&] { TcpServer({.hosts = hosts}, ignore); }) >> 16, VX_E_SOCKET_EINTR >> 16)
            << "of sockets";
    const TcpServer everywhere({.hosts = {"*"}}, ignore);
    connectTo(everywhere);
}

TEST(TcpServer, ServesAsManyAtOnceAsItIsAllowedTo)
{
    Count running, served;
    std::atomic<bool> areTooMany {false};
    TcpServer server({.hosts = LOOPBACK, .mostConnections = 2}, [&](TcpConnection& connection) {
        EXPECT_TRUE(connection.getPeer().startsWith(u"127.0.0.1:"));
        if (running.add(1) > 2)
            areTooMany = true;
        readByte(connection);
        sendByte(connection);
        running.add(-1);
        served.add(1);
    });
    std::vector<std::unique_ptr<TcpSocket>> clients;
    for (int number = 0; number < 5; ++number)
        clients.push_back(connectTo(server));
    running.waitFor(2);
    EXPECT_EQ(server.getConnectionCount(), 2U);
    for (const auto& client : clients)
        sendByte(*client);
    for (const auto& client : clients)
        EXPECT_EQ(readByte(*client) + readByte(*client), 1); // the answer and the end
    served.waitFor(5);
    EXPECT_FALSE(areTooMany);
    EXPECT_EQ(server.stop(VX_WAIT_FOREVER), 0U);
}

TEST(TcpServer, GivesUpAPeerThatNeitherWritesNorReads)
{
    constexpr std::size_t MUCH = 16 << 20; // more than the system keeps for a peer
    Count failed;
    std::mutex lock;
    std::set<std::string> told;
    const auto note = [&](const std::exception_ptr& failure) {
        {
            const std::lock_guard guard(lock);
            told.insert(describe(failure).toUtf8().substr(0, 24));
        }
        failed.add(1);
    };
    TcpServer server({.hosts = LOOPBACK, .onFailure = note, .timeout = 1000}, [&](TcpSocket& client) {
        readByte(client);
        client.getOutputStream()->write(std::vector<signed char>(MUCH).data(), MUCH);
    });
    const auto silent = connectTo(server);
    failed.waitFor(1);
    const auto full = connectTo(server);
    sendByte(*full);
    failed.waitFor(2);
    EXPECT_EQ(told, std::set<std::string> {"vx::io::TimeoutException"});

    const auto reader = connectTo(server);
    sendByte(*reader);
    std::size_t received = 0;
    std::vector<signed char> bytes(1 << 16);
    for (std::int32_t got = 0; (got = reader->getInputStream()->read(bytes.data(), 1 << 16)) > 0;)
        received += static_cast<std::size_t>(got);
    EXPECT_EQ(received, MUCH);
    EXPECT_EQ(server.stop(VX_WAIT_FOREVER), 0U);
}

TEST(TcpServer, TellsWhatHandlersThrow)
{
    std::mutex lock;
    std::vector<std::string> told;
    const auto note = [&](const std::exception_ptr& failure, const String& peer) {
        const std::lock_guard guard(lock);
        told.push_back(peer.toUtf8() + ' ' + describe(failure).toUtf8());
        throw 1;
    };
    int number = 0;
    TcpServer server({.hosts = LOOPBACK, .mostConnections = 1, .onFailure = note}, [&](TcpSocket&) {
        if (++number == 1)
            throw Exception(u"first");
        if (number == 2)
            throw std::runtime_error("second");
        if (number == 3)
            ::pthread_exit(nullptr);
    });
    for (int client = 0; client < 4; ++client)
        EXPECT_EQ(readByte(*connectTo(server)), 0);
    server.stop(VX_WAIT_FOREVER);
    ASSERT_EQ(told.size(), 2U);
    EXPECT_NE(told[0].find("first"), told[0].npos);
    EXPECT_NE(told[1].find("second"), told[1].npos);
    EXPECT_TRUE(told[1].starts_with("127.0.0.1:")) << told[1];
    EXPECT_EQ(server.getFailureCount(), 2U);
}

TEST(TcpServer, StopsFromAnyThreadAndCutsWhatIsLeft)
{
    Count entered, cut;
    std::unique_ptr<TcpServer> server;
    std::vector<std::unique_ptr<TcpSocket>> clients;
    const auto start = [&](TcpServer::Handler handler) {
        clients.clear();
        server = std::make_unique<TcpServer>(TcpServer::Settings {.hosts = LOOPBACK}, std::move(handler));
        for (int number = 0; number < 3; ++number)
            clients.push_back(connectTo(*server));
    };
    const auto expectEnd = [&] {
        for (const auto& client : clients)
            EXPECT_EQ(readByte(*client), 0);
    };
    start([&](TcpSocket& socket) {
        entered.add(1);
        readByte(socket);
    });
    entered.waitFor(3);
    std::thread other([&] { cut.add(static_cast<int>(server->stop(0))); });
    cut.add(static_cast<int>(server->stop(0)));
    other.join();
    cut.waitFor(3); // one of the two threads, or both in part
    EXPECT_EQ(server->getConnectionCount(), 0U);
    EXPECT_THROW(connectTo(*server), Exception);
    expectEnd();

    start([&](TcpSocket& socket) { // none waits for another one that waits
        entered.add(1);
        entered.waitFor(7); // with this thread, which has stored the server by then
        EXPECT_EQ(server->stop(VX_WAIT_FOREVER), 0U);
        readByte(socket);
    });
    entered.add(1);
    entered.waitFor(7);
    EXPECT_EQ(server->stop(0), 3U); // once they have left `stop`
    expectEnd();

    start([](TcpSocket& socket) { readByte(socket); });
    server = nullptr; // whether or not the handlers run yet
    for (const auto& client : clients) {
        try {
            EXPECT_EQ(readByte(*client), 0);
        } catch (const Exception&) { // reset: it was never accepted
        }
    }
}

TEST(TcpServer, IsNotWaitedForInAChildProcess)
{
    TcpServer server({.hosts = LOOPBACK}, [](TcpSocket& socket) { sendByte(socket), readByte(socket); });
    const auto client = connectTo(server);
    EXPECT_EQ(readByte(*client), 1) << "the handler waits";
    Child child([&](Child::Side&) {
        ::alarm(60);
        server.stop(VX_WAIT_FOREVER);
        server.~TcpServer();
    });
    EXPECT_EQ(child.wait(), 0);
    EXPECT_EQ(server.stop(0), 1U) << "the connection of this process is open";
}

/// Until then the process has too many open files for one more connection.
std::atomic<bool> g_hasNoDescriptor {false};

TEST(TcpServer, TellsOnceThatItCannotAcceptAndGoesOn)
{
    Count told;
    TcpServer server({.hosts = LOOPBACK, .onFailure = [&](const std::exception_ptr&) { told.add(1); }},
        [](TcpSocket& socket) { sendByte(socket); });
    g_hasNoDescriptor = true;
    const auto client = connectTo(server);
    told.waitFor(1);
    g_hasNoDescriptor = false;
    EXPECT_EQ(readByte(*client), 1);
    EXPECT_EQ(server.getFailureCount(), 1U);

    void (*const none)(const std::exception_ptr&) = nullptr;
    EXPECT_FALSE(TcpServer::FailureReport(none));
}

} // namespace
} // namespace vx::net

/// Comes before that of the system.
extern "C" __attribute__((visibility("default"))) int accept4(
    int listener, sockaddr* peer, socklen_t* length, int flags)
{
    static const auto next = reinterpret_cast<int (*)(int, sockaddr*, socklen_t*, int)>(::dlsym(RTLD_NEXT, "accept4"));
    if (!vx::net::g_hasNoDescriptor)
        return next(listener, peer, length, flags);
    errno = EMFILE;
    return -1;
}
