#include "tests/Slots.h"
#include "tests/Threads.h"
#include "tests/vx/Common.h"
#include "tests/vx/net/SignalStorm.h"
#include "vx/net/SocketFunctions.h"
#include "vx/net/TcpClientSocket2.h"
#include "vx/net/TcpServerSocket2.h"

#include <arpa/inet.h>
#include <atomic>
#include <fcntl.h>
#include <netinet/tcp.h>
#include <stdexcept>
#include <sys/resource.h>
#include <sys/time.h>
#include <thread>
#include <unistd.h>

namespace vx::net {
namespace {

socklen_t lengthOf(const vx_sockaddr_union& address)
{
    return address.generic.sa_family == AF_INET6 ? sizeof address.in6 : sizeof address.in4;
}

using Server = std::unique_ptr<TcpServerSocket2>;
using Client = std::unique_ptr<TcpClientSocket2>;

Server makeServer(bool reusesAddress = false)
{
    TcpServerSocket2* made = nullptr;
    EXPECT_EQ(VxNetTcpServerSocketStaticCreate(AF_UNSPEC, SOCK_STREAM, 0, &made), VX_E_SOCKET_OK);
    made->setReuseAddress(reusesAddress);
    return Server(made);
}

/// The addresses in the bind list.
std::string listOf(TcpServerSocket2& server)
{
    char text[1000];
    std::uint32_t length = sizeof text;
    EXPECT_EQ(VxNetTcpServerSocketBindListAddressesDiagnosticStrA(&server, text, &length), VX_E_SOCKET_OK);
    return text;
}

/// Bound to the wildcard addresses of both families, each with another port. It does not listen yet.
Server bindBoth(bool reusesAddress = false)
{
    Server server = makeServer(reusesAddress);
    EXPECT_EQ(VxNetTcpServerSocketBindListAddAddrAny(server.get(), 0), VX_E_SOCKET_OK);
    EXPECT_EQ(VxNetTcpServerSocketBind(server.get()), VX_E_SOCKET_OK);
    EXPECT_EQ(VxNetTcpServerSocketSaveBoundAddresses(server.get()), VX_E_SOCKET_OK);
    return server;
}

Server listenOnBoth(bool reusesAddress = false)
{
    Server server = bindBoth(reusesAddress);
    EXPECT_EQ(VxNetTcpServerSocketListen(server.get(), 0), VX_E_SOCKET_OK);
    return server;
}

/// The address for a client: the bound one of the family, with the loopback address in it.
vx_sockaddr_union loopbackOf(TcpServerSocket2& server, int family)
{
    for (std::uint32_t index = 0;; ++index) {
        vx_sockaddr_union address {};
        unsigned int length = sizeof address;
        if (VxNetTcpServerSocketGetBoundAddress(&server, index, reinterpret_cast<signed char*>(&address), &length)
            != VX_E_SOCKET_OK)
            throw std::runtime_error("no address of the family");
        if (address.generic.sa_family != family)
            continue;
        if (family == AF_INET)
            address.in4.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        else
            address.in6.sin6_addr = in6addr_loopback;
        return address;
    }
}

Client makeClient(int family)
{
    TcpClientSocket2* made = nullptr;
    EXPECT_EQ(VxNetTcpClientSocketStaticCreate(family, SOCK_STREAM, 0, &made), VX_E_SOCKET_OK);
    return Client(made);
}

Client connectTo(TcpServerSocket2& server, int family)
{
    Client client = makeClient(family);
    const vx_sockaddr_union address = loopbackOf(server, family);
    EXPECT_EQ(VxNetTcpClientSocketConnect(client.get(), &address, lengthOf(address)), VX_E_SOCKET_OK);
    return client;
}

/// Two ends of a connection.
struct Pair {
    explicit Pair(int family = AF_INET)
    {
        const Server listener = listenOnBoth();
        client = connectTo(*listener, family);
        TcpWorkerSocket2* made = nullptr;
        EXPECT_EQ(VxNetTcpServerSocketAccept(listener.get(), &made), VX_E_SOCKET_OK);
        server.reset(made);
    }

    Client client;
    std::unique_ptr<TcpWorkerSocket2> server;
};

std::string receive(TcpWorkerSocket2& socket, unsigned int most = 100)
{
    std::string text(most, '\0');
    std::int32_t count = 0;
    const ENUM_VX_E_SOCKET result = VxNetTcpWorkerSocketRecv(&socket, text.data(), most, 0, &count);
    if (count <= 0)
        return count == 0 && result == VX_E_SOCKET_OK ? "end" : "failure";
    text.resize(static_cast<std::size_t>(count));
    return text;
}

ENUM_VX_E_SOCKET sendText(TcpWorkerSocket2& socket, std::string text)
{
    std::int32_t count = 0;
    const ENUM_VX_E_SOCKET result
        = VxNetTcpWorkerSocketSend(&socket, text.data(), static_cast<unsigned int>(text.size()), 0, &count);
    EXPECT_TRUE(result != VX_E_SOCKET_OK || count == static_cast<std::int32_t>(text.size()));
    return result;
}

TEST(TcpSocket2, KeepsTheOrderOfVirtualOperations)
{
    using Socket = TcpSocket2;
    using Worker = TcpWorkerSocket2;
    using Send = ENUM_VX_E_SOCKET (Worker::*)(char*, unsigned int, std::int32_t, std::int32_t*);
    expectSlots("after the two slots of the destructor", 2,
        {&Socket::getId, &Socket::shutdownInput, &Socket::shutdownOutput, &Socket::shutdownBoth, &Socket::close,
            &Socket::getShutdownIn, &Socket::getShutdownOut, &Socket::getClosed});
    expectSlots("Worker", 13, {&Worker::getsockopt, &Worker::recv, Send(&Worker::send), &Worker::setsockopt});
}

class Families : public testing::TestWithParam<int> { };
INSTANTIATE_TEST_SUITE_P(Sockets2, Families, testing::Values(AF_INET, AF_INET6));

TEST_P(Families, CarryDataAndEndHalfByHalf)
{
    Pair pair(GetParam());
    TcpWorkerSocket2 &client = *pair.client, &server = *pair.server;
    String peer;
    server.getPeerAddress()->getDiagnosticStr(peer);
    EXPECT_TRUE(peer.startsWith(GetParam() == AF_INET ? u"127.0.0.1:" : u"[::1]:")) << peer;

    EXPECT_EQ(sendText(client, "ping"), VX_E_SOCKET_OK);
    EXPECT_EQ(receive(server), "ping");
    EXPECT_EQ(VxNetTcpSocketShutdownOutput(&client), VX_E_SOCKET_OK);
    EXPECT_EQ(client.getShutdownOut(), 1);
    EXPECT_EQ(receive(server), "end");
    EXPECT_EQ(sendText(server, "pong"), VX_E_SOCKET_OK) << "the other half is open";
    EXPECT_EQ(receive(client), "pong");
    EXPECT_EQ(sendText(client, "late"), VX_E_SOCKET_ESHUTDOWN);

    EXPECT_EQ(VxNetTcpSocketShutdownInput(&server), VX_E_SOCKET_OK);
    EXPECT_EQ(server.getShutdownIn() - server.getShutdownOut(), 1);
    EXPECT_EQ(VxNetTcpSocketShutdownBoth(&server), VX_E_SOCKET_OK);
    EXPECT_EQ(receive(client), "end");
    EXPECT_NE(VxNetTcpSocketGetId(&server), 0U);
    EXPECT_EQ(VxNetTcpSocketClose(&server), VX_E_SOCKET_OK);
    EXPECT_EQ(VxNetTcpSocketGetId(&server), 0U);
    std::int32_t count = 42;
    char byte = 0;
    EXPECT_EQ(server.recv(&byte, 1, 0, &count), VX_E_SOCKET_ENOTSOCK);
    EXPECT_EQ(server.send(nullptr, 1, 0, &count), VX_E_SOCKET_EINVAL);
    EXPECT_EQ(count, 42);
}

TEST_P(Families, MeetRefusalNoRouteAndAPeerThatIsGone)
{
    // A port that is free could be used by another program or the client meanwhile.
    const Server deaf = bindBoth();
    vx_sockaddr_union address = loopbackOf(*deaf, GetParam());
    EXPECT_EQ(makeClient(GetParam())->connect(&address, lengthOf(address)), VX_E_SOCKET_ECONNREFUSED);
    // No connection to a multicast address is possible, whatever the routes are.
    if (GetParam() == AF_INET)
        ::inet_pton(AF_INET, "224.0.0.1", &address.in4.sin_addr);
    else
        ::inet_pton(AF_INET6, "ff0e::1", &address.in6.sin6_addr);
    EXPECT_EQ(makeClient(GetParam())->connect(&address, lengthOf(address)), VX_E_SOCKET_ENETUNREACH);

    Pair pair(GetParam());
    EXPECT_EQ(pair.client->shutdownInput(), VX_E_SOCKET_OK);
    const linger hard {1, 0}; // closing sends a reset
    EXPECT_EQ(pair.client->setsockopt(SOL_SOCKET, SO_LINGER, reinterpret_cast<const char*>(&hard), sizeof hard),
        VX_E_SOCKET_OK);
    pair.client->close();
    std::int32_t count = 0;
    char byte = 0;
    EXPECT_EQ(pair.server->recv(&byte, 1, 0, &count), VX_E_SOCKET_ECONNRESET);
    EXPECT_EQ(count, -1);
    EXPECT_EQ(sendText(*pair.server, "x"), VX_E_SOCKET_ECONNRESET) << "a result, and no signal";
    EXPECT_EQ(sendText(*makeClient(GetParam()), "x"), VX_E_SOCKET_ENOTCONN);
}

TEST(TcpClientSocket2, TellsAnInterruption)
{
    Pair pair;
    const SignalStorm storm;
    char byte = 0;
    std::int32_t count = 0;
    EXPECT_EQ(pair.client->recv(&byte, 1, 0, &count), VX_E_SOCKET_EINTR);
    EXPECT_EQ(count, -1);
    TcpWorkerSocket2* sockets[] = {pair.client.get()};
    std::uint32_t one = 1, none = 0, alsoNone = 0;
    EXPECT_EQ(TcpWorkerSocket2::select(sockets, &one, nullptr, &none, nullptr, &alsoNone, nullptr, &count),
        VX_E_SOCKET_EINTR);
}

/// Calls `select` with a set for reading only.
ENUM_VX_E_SOCKET selectRead(
    std::vector<TcpWorkerSocket2*>& sockets, std::uint32_t& count, std::int32_t& ready, const timeval& time = {0, 0})
{
    std::uint32_t none[] = {0, 0};
    count = static_cast<std::uint32_t>(sockets.size());
    return VxNetTcpWorkerSocketStaticSelect(
        sockets.data(), &count, nullptr, &none[0], nullptr, &none[1], &time, &ready);
}

TEST(Select, KeepsTheReadySocketsAndCountsThem)
{
    Pair first, second;
    std::uint32_t count = 0;
    std::int32_t ready = 0;
    std::vector<TcpWorkerSocket2*> sockets {first.server.get(), second.server.get(), second.server.get()};
    EXPECT_EQ(selectRead(sockets, count, ready), VX_E_SOCKET_OK);
    EXPECT_EQ(count, 0U);
    EXPECT_EQ(sockets[0], first.server.get()) << "a time-out leaves the array";

    sendText(*second.client, "x");
    EXPECT_EQ(selectRead(sockets, count, ready, {10, 0}), VX_E_SOCKET_OK);
    EXPECT_EQ(count, 2U) << "twice in the set, twice counted";
    EXPECT_EQ(ready, 1) << "one descriptor";
    EXPECT_EQ(sockets, (std::vector<TcpWorkerSocket2*> {nullptr, second.server.get(), second.server.get()}));

    sockets = {first.server.get(), second.server.get()};
    first.server->close();
    EXPECT_EQ(selectRead(sockets, count, ready), VX_E_SOCKET_ENOTSOCK);

    sockets.assign(64, second.server.get());
    EXPECT_EQ(selectRead(sockets, count, ready), VX_E_SOCKET_EMFILE);
    sockets.pop_back();
    EXPECT_EQ(selectRead(sockets, count, ready), VX_E_SOCKET_OK);
    EXPECT_EQ(count, 63U);
}

TEST(Select, DropsASocketWhoseNumberChangesMeanwhile)
{
    class Renumbered : public TcpWorkerSocket2 {
    public:
        using TcpWorkerSocket2::TcpWorkerSocket2;
        unsigned int getId() override { return TcpWorkerSocket2::getId() + m_calls++; }

    private:
        unsigned int m_calls = 0;
    };
    Pair pair;
    sendText(*pair.client, "x");
    ENUM_VX_E_SOCKET status = VX_E_SOCKET_OK;
    Renumbered renumbered(static_cast<unsigned int>(::dup(static_cast<int>(pair.server->getId()))), &status);
    std::vector<TcpWorkerSocket2*> sockets {&renumbered, pair.server.get()};
    std::uint32_t count = 0;
    std::int32_t ready = 0;
    EXPECT_EQ(selectRead(sockets, count, ready, {10, 0}), VX_E_SOCKET_OK);
    EXPECT_EQ(count, 1U);
    EXPECT_EQ(sockets, (std::vector<TcpWorkerSocket2*> {nullptr, pair.server.get()}));
}

TEST(Select, WaitsForDescriptorsBeyondThoseOfASystemSet)
{
    rlimit limit {};
    ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &limit), 0);
    limit.rlim_cur = std::min<rlim_t>(limit.rlim_max, 4096);
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &limit), 0);
    Pair pair;
    const int high = ::fcntl(static_cast<int>(pair.server->getId()), F_DUPFD_CLOEXEC, 2000);
    if (high < 0)
        GTEST_SKIP() << "no descriptor of such a number here";
    ENUM_VX_E_SOCKET status = VX_E_SOCKET_OK;
    TcpWorkerSocket2 worker(static_cast<unsigned int>(high), &status);
    sendText(*pair.client, "high");
    std::vector<TcpWorkerSocket2*> sockets {&worker};
    std::uint32_t count = 0;
    std::int32_t ready = 0;
    EXPECT_EQ(selectRead(sockets, count, ready, {10, 0}), VX_E_SOCKET_OK);
    EXPECT_EQ(count, 1U);
    EXPECT_EQ(receive(worker), "high");
}

TEST(TcpServerSocket2, ListensOnBothFamiliesOfOnePort)
{
    const Server first = listenOnBoth();
    const unsigned short port = ntohs(loopbackOf(*first, AF_INET).in4.sin_port);

    // The IPv4 port is in use, so only the IPv6 one can be bound.
    const Server second = makeServer();
    EXPECT_EQ(second->bindListAddAddrAny(port), VX_E_SOCKET_OK);
    EXPECT_EQ(listOf(*second), "[::]:" + std::to_string(port) + "; 0.0.0.0:" + std::to_string(port));

    for (const int family : {AF_INET6, AF_INET}) {
        const Client client = connectTo(*first, family);
        unsigned int handle = 0;
        EXPECT_EQ(VxNetTcpServerSocketAcceptSocket(first.get(), &handle), VX_E_SOCKET_OK);
        EXPECT_EQ(::fcntl(static_cast<int>(handle), F_GETFD), FD_CLOEXEC);
        ::close(static_cast<int>(handle));
    }
}

TEST(TcpServerSocket2, TakesAPortAgainWhoseConnectionsAreEnding)
{
    Client client;
    vx_sockaddr_union address {};
    const auto bindAgain = [&](bool reuses) {
        const Server server = makeServer(reuses);
        EXPECT_EQ(server->bindListAddAddrInfo("127.0.0.1", nullptr, ntohs(address.in4.sin_port)), VX_E_SOCKET_OK);
        return server->bind();
    };
    {
        const Server first = listenOnBoth(true);
        address = loopbackOf(*first, AF_INET);
        client = connectTo(*first, AF_INET);
        EXPECT_EQ(bindAgain(true), VX_E_SOCKET_EADDRINUSE) << "the first one stands there";
        TcpWorkerSocket2* made = nullptr;
        EXPECT_EQ(first->accept(&made), VX_E_SOCKET_OK);
        delete made; // before the client, so that this end of the connection remains for some time
    }
    EXPECT_EQ(bindAgain(false), VX_E_SOCKET_EADDRINUSE);
    EXPECT_EQ(bindAgain(true), VX_E_SOCKET_OK);
}

TEST(TcpServerSocket2, WaitsOnWhenAnotherThreadWasFasterToAccept)
{
    constexpr int CONNECTIONS = 200;
    const Server listener = listenOnBoth();
    std::atomic<int> begun {0}, accepted {0};
    inThreads(5, [&](int thread) {
        for (int count = 0; count < CONNECTIONS && thread == 0; ++count)
            connectTo(*listener, count % 2 == 0 ? AF_INET : AF_INET6);
        while (thread != 0 && begun++ < CONNECTIONS) {
            unsigned int handle = 0;
            if (listener->accept(&handle) == VX_E_SOCKET_OK && ::close(static_cast<int>(handle)) == 0)
                ++accepted;
        }
    });
    EXPECT_EQ(accepted, CONNECTIONS);
}

TEST(TcpServerSocket2, CollectsAddresses)
{
    const Server server = makeServer();
    const auto add = [&](const char* hosts, unsigned short port) {
        return VxNetTcpServerSocketBindListAddAddrInfo(server.get(), hosts, nullptr, port);
    };
    EXPECT_EQ(add("127.0.0.1,  ::1", 80), VX_E_SOCKET_OK);
    EXPECT_EQ(listOf(*server), "127.0.0.1:80; [::1]:80");
    EXPECT_EQ(add("127.0.0.1", 0), VX_E_SOCKET_EINVAL);
    EXPECT_EQ(VxNetTcpServerSocketBindListSaveOneForNamedPipeReply(server.get()), VX_E_SOCKET_OK);
    EXPECT_EQ(listOf(*server), "") << "more than one: nothing is kept";
    EXPECT_EQ(server->bind(), VX_E_SOCKET_OK);
    unsigned int handle = 0;
    EXPECT_EQ(server->accept(&handle), VX_E_SOCKET_ENOTSOCK);

    EXPECT_EQ(add("127.0.0.2", 9), VX_E_SOCKET_OK);
    EXPECT_EQ(VxNetTcpServerSocketBindListClear(server.get()), VX_E_SOCKET_OK);
    EXPECT_EQ(add("127.0.0.3", 9), VX_E_SOCKET_OK);
    EXPECT_EQ(VxNetTcpServerSocketBindListSaveOneForNamedPipeReply(server.get()), VX_E_SOCKET_OK);
    char text[100];
    std::uint32_t length = sizeof text;
    EXPECT_EQ(VxNetTcpServerSocketSaveBoundAddresses(server.get()), VX_E_SOCKET_OK);
    EXPECT_EQ(VxNetTcpServerSocketBoundListAddressesDiagnosticStrA(server.get(), text, &length), VX_E_SOCKET_OK);
    EXPECT_STREQ(text, "127.0.0.3:9");

    for (int entry = 0; entry < 20; ++entry)
        EXPECT_EQ(add("127.0.0.1", 80), VX_E_SOCKET_OK);
    EXPECT_EQ(add("127.0.0.1", 80), VX_E_SOCKET_HOST_NOT_FOUND);
}

TEST(FlatSocketFunctions, DoForAClientWhatTheyDoForAWorker)
{
    Pair pair;
    TcpWorkerSocket2* client = pair.client.get();
    constexpr int ON = 1, OFF = 0;
    int found = -1, length = sizeof found;
    const auto* const on = reinterpret_cast<const char*>(&ON);
    EXPECT_EQ(VxNetTcpWorkerSocketSetsockopt(client, IPPROTO_TCP, TCP_NODELAY, on, sizeof ON), VX_E_SOCKET_OK);
    auto* const value = reinterpret_cast<char*>(&found);
    EXPECT_EQ(VxNetTcpClientSocketGetsockopt(client, IPPROTO_TCP, TCP_NODELAY, value, &length), VX_E_SOCKET_OK);
    EXPECT_NE(found, OFF);
    const auto* const off = reinterpret_cast<const char*>(&OFF);
    EXPECT_EQ(VxNetTcpClientSocketSetsockopt(client, IPPROTO_TCP, TCP_NODELAY, off, sizeof OFF), VX_E_SOCKET_OK);
    EXPECT_EQ(VxNetTcpWorkerSocketGetsockopt(client, IPPROTO_TCP, TCP_NODELAY, value, &length), VX_E_SOCKET_OK);
    EXPECT_EQ(found, OFF);
    char byte = 'x';
    std::int32_t count = 0, ready = 0;
    EXPECT_EQ(VxNetTcpClientSocketSend(client, &byte, 1, 0, &count), VX_E_SOCKET_OK);
    EXPECT_EQ(receive(*pair.server), "x");
    sendText(*pair.server, "y");
    std::uint32_t one = 1, none[] = {0, 0};
    const timeval time {60, 0};
    EXPECT_EQ(VxNetTcpClientSocketStaticSelect(&client, &one, nullptr, &none[0], nullptr, &none[1], &time, &ready),
        VX_E_SOCKET_OK);
    EXPECT_EQ(ready, 1);
    EXPECT_EQ(VxNetTcpClientSocketRecv(client, &byte, 1, 0, &count), VX_E_SOCKET_OK);
    EXPECT_EQ(byte, 'y');

    const Server listener = listenOnBoth();
    const vx_sockaddr_union address = loopbackOf(*listener, AF_INET);
    vx_sockaddr_union own = address;
    own.in4.sin_port = 0;
    own.in4.sin_addr.s_addr = htonl(INADDR_LOOPBACK + 1);
    TcpSocket2* bound = makeClient(AF_INET).release();
    auto* const second = static_cast<TcpClientSocket2*>(bound);
    EXPECT_EQ(VxNetTcpClientSocketBind(second, &own, lengthOf(own)), VX_E_SOCKET_OK);
    EXPECT_EQ(second->connect(&address, lengthOf(address)), VX_E_SOCKET_OK);
    length = sizeof own;
    EXPECT_EQ(VxNetTcpClientSocketGetLocalAddress(second, &own, &length), VX_E_SOCKET_OK);
    EXPECT_EQ(own.in4.sin_addr.s_addr, htonl(INADDR_LOOPBACK + 1));
    EXPECT_NE(own.in4.sin_port, 0);
    EXPECT_EQ(VxNetTcpSocketStaticDestroy(&bound), VX_E_SOCKET_OK);
    EXPECT_EQ(bound, nullptr);
    EXPECT_EQ(VxNetTcpSocketClose(nullptr), VX_E_SOCKET_EINVAL);
}

} // namespace
} // namespace vx::net
