#include "tests/Slots.h"
#include "vx/String.h"
#include "vx/net/SocketFunctions.h"
#include "vx/net/TcpClientSocket2.h"
#include "vx/net/TcpServerSocket2.h"

#include <gtest/gtest.h>

#include <arpa/inet.h>
#include <atomic>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <memory>
#include <netdb.h>
#include <string>
#include <sys/resource.h>
#include <sys/time.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace vx::net {
namespace {

template <class T>
using Owner = std::unique_ptr<T>;

socklen_t lengthOf(const vx_sockaddr_union& address)
{
    return address.generic.sa_family == AF_INET6 ? sizeof address.in6 : sizeof address.in4;
}

Owner<TcpServerSocket2> makeServer()
{
    TcpServerSocket2* made = nullptr;
    EXPECT_EQ(TcpServerSocket2::createTcpServerSocket2(AF_UNSPEC, SOCK_STREAM, 0, &made), VX_E_SOCKET_OK);
    return Owner<TcpServerSocket2>(made);
}

/// Listens on the wildcards of both families, each on a port of its own.
Owner<TcpServerSocket2> listenOnBoth()
{
    Owner<TcpServerSocket2> server = makeServer();
    EXPECT_EQ(server->bindListAddAddrAny(0), VX_E_SOCKET_OK);
    EXPECT_EQ(server->bind(), VX_E_SOCKET_OK);
    EXPECT_EQ(server->listen(0), VX_E_SOCKET_OK);
    EXPECT_EQ(server->saveBoundAddresses(), VX_E_SOCKET_OK);
    return server;
}

/// What a client connects to: the bound address of the family, with the loopback address in it.
vx_sockaddr_union loopbackOf(TcpServerSocket2& server, int family)
{
    for (std::uint32_t index = 0;; ++index) {
        vx_sockaddr_union address {};
        unsigned int length = sizeof address;
        if (server.getBoundAddress(index, reinterpret_cast<signed char*>(&address), &length) != VX_E_SOCKET_OK) {
            ADD_FAILURE() << "no address of family " << family;
            return {};
        }
        if (address.generic.sa_family != family)
            continue;
        if (family == AF_INET)
            address.in4.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        else
            address.in6.sin6_addr = in6addr_loopback;
        return address;
    }
}

Owner<TcpClientSocket2> makeClient(int family)
{
    TcpClientSocket2* made = nullptr;
    EXPECT_EQ(TcpClientSocket2::createTcpClientSocket2(family, SOCK_STREAM, 0, &made), VX_E_SOCKET_OK);
    return Owner<TcpClientSocket2>(made);
}

/// Two ends of a connection.
struct Pair {
    explicit Pair(int family = AF_INET)
        : client(makeClient(family))
    {
        const Owner<TcpServerSocket2> listener = listenOnBoth();
        const vx_sockaddr_union address = loopbackOf(*listener, family);
        EXPECT_EQ(client->connect(&address, lengthOf(address)), VX_E_SOCKET_OK);
        TcpWorkerSocket2* made = nullptr;
        EXPECT_EQ(listener->accept(&made), VX_E_SOCKET_OK);
        server.reset(made);
    }

    Owner<TcpClientSocket2> client;
    Owner<TcpWorkerSocket2> server;
};

std::string receive(TcpWorkerSocket2& socket, unsigned int most = 100)
{
    std::string text(most, '\0');
    std::int32_t count = 0;
    const ENUM_VX_E_SOCKET result = socket.recv(text.data(), most, 0, &count);
    if (count <= 0)
        return count == 0 && result == VX_E_SOCKET_OK ? "end" : "failure";
    text.resize(static_cast<std::size_t>(count));
    return text;
}

ENUM_VX_E_SOCKET sendText(TcpWorkerSocket2& socket, std::string_view text)
{
    std::int32_t count = 0;
    const ENUM_VX_E_SOCKET result = socket.send(text.data(), static_cast<unsigned int>(text.size()), 0, &count);
    EXPECT_TRUE(result != VX_E_SOCKET_OK || count == static_cast<std::int32_t>(text.size()));
    return result;
}

TEST(TcpSocket2, KeepsTheOrderOfVirtualOperations)
{
    // Behind the two slots of the destructor.
    const std::vector<std::size_t> root {slotOf(&TcpSocket2::getId), slotOf(&TcpSocket2::shutdownInput),
        slotOf(&TcpSocket2::shutdownOutput), slotOf(&TcpSocket2::shutdownBoth), slotOf(&TcpSocket2::close),
        slotOf(&TcpSocket2::getShutdownIn), slotOf(&TcpSocket2::getShutdownOut), slotOf(&TcpSocket2::getClosed)};
    for (std::size_t index = 0; index < root.size(); ++index)
        EXPECT_EQ(root[index], index + 2);
    using Worker = TcpWorkerSocket2;
    const std::vector<std::size_t> worker {slotOf(&Worker::getsockopt), slotOf(&Worker::recv),
        slotOf(
            static_cast<ENUM_VX_E_SOCKET (Worker::*)(char*, unsigned int, std::int32_t, std::int32_t*)>(&Worker::send)),
        slotOf(&Worker::setsockopt)};
    for (std::size_t index = 0; index < worker.size(); ++index)
        EXPECT_EQ(worker[index], index + 13);
}

class Families : public testing::TestWithParam<int> { };
INSTANTIATE_TEST_SUITE_P(Sockets2, Families, testing::Values(AF_INET, AF_INET6));

TEST_P(Families, CarryDataAndEndHalfByHalf)
{
    Pair pair(GetParam());
    String peer;
    pair.server->getPeerAddress()->getDiagnosticStr(peer);
    EXPECT_TRUE(peer.startsWith(GetParam() == AF_INET ? u"127.0.0.1:" : u"[::1]:")) << peer;
    vx_sockaddr_union local {};
    int length = sizeof local;
    EXPECT_EQ(pair.client->getLocalAddress(&local, &length), VX_E_SOCKET_OK);
    EXPECT_EQ(length, static_cast<int>(lengthOf(local)));

    EXPECT_EQ(sendText(*pair.client, "ping"), VX_E_SOCKET_OK);
    EXPECT_EQ(receive(*pair.server), "ping");
    EXPECT_EQ(pair.client->shutdownOutput(), VX_E_SOCKET_OK);
    EXPECT_EQ(pair.client->shutdownOutput(), VX_E_SOCKET_OK);
    EXPECT_EQ(pair.client->getShutdownOut(), 1);
    EXPECT_EQ(receive(*pair.server), "end");
    EXPECT_EQ(sendText(*pair.server, "pong"), VX_E_SOCKET_OK) << "the other half is open";
    EXPECT_EQ(receive(*pair.client), "pong");
    EXPECT_EQ(sendText(*pair.client, "late"), VX_E_SOCKET_ESHUTDOWN);

    EXPECT_EQ(pair.server->shutdownInput(), VX_E_SOCKET_OK);
    EXPECT_EQ(pair.server->shutdownBoth(), VX_E_SOCKET_OK);
    EXPECT_EQ(receive(*pair.client), "end");
    EXPECT_EQ(pair.server->close(), VX_E_SOCKET_OK);
    EXPECT_EQ(pair.server->close(), VX_E_SOCKET_OK);
    EXPECT_EQ(pair.server->getId(), 0U);
    std::int32_t count = 42;
    char byte = 0;
    EXPECT_EQ(pair.server->recv(&byte, 1, 0, &count), VX_E_SOCKET_ENOTSOCK);
    EXPECT_EQ(count, 42);
    EXPECT_EQ(pair.server->recv(nullptr, 1, 0, &count), VX_E_SOCKET_EINVAL);
    EXPECT_EQ(pair.server->shutdownOutput(), VX_E_SOCKET_OK) << "sets the flag alone";
}

TEST_P(Families, MeetRefusalAndAPeerThatIsGone)
{
    vx_sockaddr_union address {};
    {
        const Owner<TcpServerSocket2> listener = listenOnBoth();
        address = loopbackOf(*listener, GetParam());
    }
    EXPECT_EQ(makeClient(GetParam())->connect(&address, lengthOf(address)), VX_E_SOCKET_ECONNREFUSED);

    Pair pair(GetParam());
    EXPECT_EQ(pair.client->shutdownInput(), VX_E_SOCKET_OK);
    const linger hard {1, 0}; // the close becomes a reset
    EXPECT_EQ(pair.client->setsockopt(SOL_SOCKET, SO_LINGER, reinterpret_cast<const char*>(&hard), sizeof hard),
        VX_E_SOCKET_OK);
    pair.client->close();
    std::int32_t count = 0;
    char byte = 0;
    EXPECT_EQ(pair.server->recv(&byte, 1, 0, &count), VX_E_SOCKET_ECONNRESET);
    EXPECT_EQ(count, -1);
    EXPECT_EQ(sendText(*pair.server, "x"), VX_E_SOCKET_ESHUTDOWN) << "a result, and no signal";
}

TEST(TcpClientSocket2, TellsAnInterruption)
{
    Pair pair;
    struct sigaction action { };
    struct sigaction before { };
    action.sa_handler = [](int) {};
    ::sigaction(SIGUSR1, &action, &before);
    const pthread_t reader = ::pthread_self();
    std::atomic<bool> isDone {false};
    std::thread signaller([&] {
        while (!isDone) {
            ::pthread_kill(reader, SIGUSR1);
            std::this_thread::yield();
        }
    });
    char byte = 0;
    std::int32_t count = 0;
    EXPECT_EQ(pair.client->recv(&byte, 1, 0, &count), VX_E_SOCKET_EINTR);
    EXPECT_EQ(count, -1);
    TcpWorkerSocket2* sockets[] = {pair.client.get()};
    std::uint32_t one = 1;
    std::uint32_t none = 0;
    std::uint32_t alsoNone = 0;
    EXPECT_EQ(TcpWorkerSocket2::select(sockets, &one, nullptr, &none, nullptr, &alsoNone, nullptr, &count),
        VX_E_SOCKET_EINTR);
    isDone = true;
    signaller.join();
    ::sigaction(SIGUSR1, &before, nullptr);
}

/// Calls `select` with a set for reading alone.
ENUM_VX_E_SOCKET selectRead(
    std::vector<TcpWorkerSocket2*>& sockets, std::uint32_t& count, std::int32_t& ready, const timeval& time = {0, 0})
{
    std::uint32_t none[] = {0, 0};
    count = static_cast<std::uint32_t>(sockets.size());
    return TcpWorkerSocket2::select(sockets.data(), &count, nullptr, &none[0], nullptr, &none[1], &time, &ready);
}

TEST(Select, KeepsTheReadySocketsAndCountsThem)
{
    Pair first;
    Pair second;
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
    sockets = {nullptr};
    EXPECT_EQ(selectRead(sockets, count, ready), VX_E_SOCKET_EINVAL);

    sockets.assign(64, second.server.get());
    EXPECT_EQ(selectRead(sockets, count, ready), VX_E_SOCKET_EMFILE);
    sockets.pop_back();
    EXPECT_EQ(selectRead(sockets, count, ready), VX_E_SOCKET_OK);
    EXPECT_EQ(count, 63U);
    sockets.clear();
    EXPECT_EQ(selectRead(sockets, count, ready, {0, 1000}), VX_E_SOCKET_OK) << "a plain wait";
    sockets = {second.server.get()};
    EXPECT_EQ(selectRead(sockets, count, ready, {-1, 0}), VX_E_SOCKET_EINVAL);
}

TEST(Select, TellsTheErrorOfAConnectThatFails)
{
    vx_sockaddr_union address {};
    {
        const Owner<TcpServerSocket2> listener = listenOnBoth();
        address = loopbackOf(*listener, AF_INET);
    }
    const Owner<TcpClientSocket2> client = makeClient(AF_INET);
    ::fcntl(static_cast<int>(client->getId()), F_SETFL, O_NONBLOCK);
    const ENUM_VX_E_SOCKET begun = client->connect(&address, lengthOf(address));
    if (begun == VX_E_SOCKET_ECONNREFUSED)
        GTEST_SKIP() << "the refusal came at once";
    ASSERT_EQ(begun, VX_E_SOCKET_EINPROGRESS);
    TcpWorkerSocket2* write[] = {client.get()};
    TcpWorkerSocket2* except[] = {client.get()};
    std::uint32_t counts[] = {0, 1, 1};
    std::int32_t ready = 0;
    const timeval time {10, 0};
    EXPECT_EQ(TcpWorkerSocket2::select(nullptr, &counts[0], write, &counts[1], except, &counts[2], &time, &ready),
        VX_E_SOCKET_ECONNREFUSED);
    EXPECT_EQ(counts[1], 1U);
    EXPECT_EQ(counts[2], 1U);
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
    const Owner<TcpServerSocket2> first = listenOnBoth();
    const vx_sockaddr_union four = loopbackOf(*first, AF_INET);
    const unsigned short port = ntohs(four.in4.sin_port);

    // The IPv4 port is taken, so that the IPv6 one alone can be had.
    const Owner<TcpServerSocket2> second = makeServer();
    EXPECT_EQ(second->bindListAddAddrAny(port), VX_E_SOCKET_OK);
    char text[100];
    std::uint32_t length = sizeof text;
    EXPECT_EQ(second->bindListAddressesDiagnosticStrA(text, &length), VX_E_SOCKET_OK);
    EXPECT_EQ(text, "[::]:" + std::to_string(port) + "; 0.0.0.0:" + std::to_string(port));
    length = 5;
    EXPECT_EQ(second->bindListAddressesDiagnosticStrA(text, &length), VX_E_SOCKET_EFAULT);
    EXPECT_STREQ(text, "");
    if (second->bind() == VX_E_SOCKET_OK) { // another process may have it
        EXPECT_EQ(second->saveBoundAddresses(), VX_E_SOCKET_OK);
        length = sizeof text;
        EXPECT_EQ(second->boundListAddressesDiagnosticStrA(text, &length), VX_E_SOCKET_OK);
        EXPECT_EQ(text, "[::]:" + std::to_string(port));
    }

    for (const int family : {AF_INET6, AF_INET}) {
        const Owner<TcpClientSocket2> client = makeClient(family);
        const vx_sockaddr_union address = loopbackOf(*first, family);
        EXPECT_EQ(client->connect(&address, lengthOf(address)), VX_E_SOCKET_OK);
        unsigned int handle = 0;
        EXPECT_EQ(first->accept(&handle), VX_E_SOCKET_OK);
        EXPECT_EQ(::fcntl(static_cast<int>(handle), F_GETFD), FD_CLOEXEC);
        ::close(static_cast<int>(handle));
    }
    EXPECT_NE(first->getId(), 0U);
    EXPECT_EQ(first->close(), VX_E_SOCKET_OK);
    unsigned int handle = 0;
    EXPECT_EQ(first->accept(&handle), VX_E_SOCKET_ENOTSOCK);
    EXPECT_EQ(handle, 0xFFFFFFFF);
    const Owner<TcpServerSocket2> forgetful = listenOnBoth();
    forgetful->socketListClear();
    EXPECT_EQ(forgetful->accept(&handle), VX_E_SOCKET_EBADF) << "no wait for what is forgotten";
}

TEST(TcpServerSocket2, CollectsAddresses)
{
    const Owner<TcpServerSocket2> server = makeServer();
    const auto list = [&] {
        char text[1000];
        std::uint32_t length = sizeof text;
        EXPECT_EQ(server->bindListAddressesDiagnosticStrA(text, &length), VX_E_SOCKET_OK);
        return std::string(text);
    };
    EXPECT_EQ(server->bindListAddAddrInfo("127.0.0.1,  ::1", nullptr, 80), VX_E_SOCKET_OK);
    EXPECT_EQ(list(), "127.0.0.1:80; [::1]:80");
    EXPECT_NE(server->bindListAddAddrInfo("127.0.0.2 ,127.0.0.3", nullptr, 80), VX_E_SOCKET_EINVAL);
    EXPECT_EQ(server->bindListAddAddrInfo("0.0.0.0", nullptr, 80), VX_E_SOCKET_HOST_NOT_FOUND)
        << "wildcards do not count";
    EXPECT_EQ(server->bindListAddAddrInfo("127.0.0.1", nullptr, 0), VX_E_SOCKET_EINVAL);
    EXPECT_EQ(server->bindListAddAddrInfo(nullptr, nullptr, 80), VX_E_SOCKET_EINVAL);
    EXPECT_EQ(server->bindListSaveOneForNamedPipeReply(), VX_E_SOCKET_OK);
    EXPECT_EQ(list(), "") << "more than one: nothing is kept";
    EXPECT_EQ(server->bind(), VX_E_SOCKET_OK);
    unsigned int handle = 0;
    EXPECT_EQ(server->accept(&handle), VX_E_SOCKET_ENOTSOCK);

    EXPECT_EQ(server->bindListAddAddrInfo("127.0.0.1", nullptr, 81), VX_E_SOCKET_OK);
    EXPECT_EQ(server->bindListSaveOneForNamedPipeReply(), VX_E_SOCKET_OK);
    EXPECT_EQ(server->saveBoundAddresses(), VX_E_SOCKET_OK);
    char text[100];
    std::uint32_t length = sizeof text;
    EXPECT_EQ(server->boundListAddressesDiagnosticStrA(text, &length), VX_E_SOCKET_OK);
    EXPECT_STREQ(text, "127.0.0.1:81");
    EXPECT_EQ(VxNetTcpServerSocketBoundListAddressesDiagnosticStrA(server.get(), nullptr, &length), VX_E_SOCKET_EINVAL);
    EXPECT_EQ(length, 13U) << "a failed check does nothing else";

    for (int entry = 0; entry < 20; ++entry)
        EXPECT_EQ(server->bindListAddAddrInfo("127.0.0.1", nullptr, 80), VX_E_SOCKET_OK);
    EXPECT_EQ(server->bindListAddAddrInfo("127.0.0.1", nullptr, 80), VX_E_SOCKET_HOST_NOT_FOUND);
    EXPECT_EQ(server->bindListAddAddrAny(80), VX_E_SOCKET_EFAULT);
}

TEST(TcpSocket2, LooksUpByIndexAndDestroysByPointer)
{
    vx_sockaddr_union address {};
    addrinfo hints {};
    hints.ai_flags = AI_NUMERICHOST;
    hints.ai_socktype = SOCK_STREAM;
    EXPECT_EQ(TcpSocket2::getAddrInfo("127.0.0.1", 80, &hints, 0, &address), VX_E_SOCKET_OK);
    EXPECT_EQ(ntohs(address.in4.sin_port), 80);
    EXPECT_EQ(TcpSocket2::getAddrInfo("127.0.0.1", 80, &hints, 1, &address), VX_E_SOCKET_EADDRNOTAVAIL);
    EXPECT_EQ(TcpSocket2::getAddrInfo("127.0.0.1", 0, &hints, 0, &address), VX_E_SOCKET_EINVAL);
    EXPECT_EQ(TcpSocket2::getAddrInfo("no number", 80, &hints, 0, &address), VX_E_SOCKET_EAI_NONAME);
    hints.ai_family = 999;
    EXPECT_EQ(TcpSocket2::getAddrInfo("127.0.0.1", 80, &hints, 0, &address), VX_E_SOCKET_EAI_FAMILY);

    std::int32_t major = 0;
    std::int32_t minor = 0;
    EXPECT_EQ(TcpSocket2::getVersion(&major, &minor), VX_E_SOCKET_OK);
    EXPECT_EQ(major * 10 + minor, 22);
    TcpSocket2* socket = makeClient(AF_INET).release();
    EXPECT_EQ(socket->shutdownOutput(), VX_E_SOCKET_OK) << "not connected";
    EXPECT_EQ(TcpSocket2::destroyTcpSocket2(&socket), VX_E_SOCKET_OK);
    EXPECT_EQ(socket, nullptr);
    EXPECT_EQ(TcpSocket2::destroyTcpSocket2(&socket), VX_E_SOCKET_OK);
    EXPECT_EQ(TcpSocket2::destroyTcpSocket2(nullptr), VX_E_SOCKET_EINVAL);
    TcpClientSocket2* none = nullptr;
    EXPECT_EQ(TcpClientSocket2::createTcpClientSocket2(AF_INET, 99, 0, &none), VX_E_SOCKET_EINVAL);
    EXPECT_EQ(VxNetTcpSocketGetId(nullptr), 0U);
    EXPECT_EQ(VxNetTcpServerSocketBindListClear(nullptr), VX_E_SOCKET_EINVAL);
}

} // namespace
} // namespace vx::net
