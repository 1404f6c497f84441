#include "tests/AllocationProbe.h"
#include "tests/vx/Common.h"
#include "tests/vx/net/SignalStorm.h"
#include "tests/vxsys/Scratch.h"
#include "vx/Describe.h"
#include "vx/io/IoException.h"
#include "vx/net/TcpClientSocket2.h"
#include "vx/net/TcpServerSocket.h"
#include "vx/net/TcpSocket.h"

#include <atomic>
#include <fcntl.h>
#include <memory>
#include <netinet/in.h>
#include <sys/socket.h>
#include <system_error>
#include <thread>
#include <unistd.h>

namespace vx::net {
namespace {

using namespace std::literals;

struct Connection {
    TcpServerSocket listener {0, 5};
    Reference<TcpSocket> client {new TcpSocket(u"127.0.0.1", listener.getPort())};
    Reference<TcpSocket> server {listener.accept()};
};

std::string read(io::InputStream& stream)
{
    char bytes[100];
    const std::int32_t got = stream.read(bytes, sizeof bytes);
    return got < 0 ? "end" : std::string(bytes, static_cast<std::size_t>(got));
}

TEST(TcpSocket, CarriesDataThroughItsStreams)
{
    Connection both;
    const Reference<io::OutputStream> output = both.client->getOutputStream();
    Reference<io::InputStream> input = both.server->getInputStream();
    output->write("ping", 4);
    EXPECT_EQ(read(*input), "ping");
    EXPECT_EQ(input->available(), 0);

    Reference<io::OutputStream> answer = both.server->getOutputStream();
    both.server = nullptr;
    answer->write("still open", 10);
    EXPECT_EQ(read(*both.client->getInputStream()), "still open");
    input->close();
    output->write("x", 1);
    EXPECT_EQ(read(*input), "x") << "closing a stream leaves the socket";
    answer = nullptr;
    input = nullptr;
    EXPECT_EQ(read(*both.client->getInputStream()), "end") << "the last one that held the socket";
}

TEST(TcpSocket, GoesOnAfterSignals)
{
    constexpr std::int32_t MANY = 8 * 1024 * 1024; // more than the system buffers for a reader
    TcpServerSocket listener(0, 0);
    Reference<TcpSocket> first;
    const SignalStorm storm;
    std::jthread other([&] {
        SignalStorm::pass();
        first = new TcpSocket(u"127.0.0.1", listener.getPort());
    });
    const Reference<TcpSocket> accepted = listener.accept();
    other.join();

    const std::vector<signed char> sent(MANY, 's');
    std::int64_t received = 0;
    other = std::jthread([&] {
        SignalStorm::pass();
        std::vector<signed char> piece(MANY);
        const Reference<io::InputStream> input = first->getInputStream();
        for (std::int32_t got; received < MANY && (got = input->read(piece.data(), MANY)) > 0;)
            received += got;
    });
    accepted->getOutputStream()->write(sent.data(), MANY);
    other.join();
    EXPECT_EQ(received, MANY);

    const Reference<io::InputStream> input = accepted->getInputStream();
    accepted->setSoTimeout(50);
    for (int round = 0; round < 2; ++round)
        EXPECT_EQ(saidBy<io::TimeoutException>([&] { read(*input); }), "socket timeout");
    accepted->setSoTimeout(0);
    other = std::jthread([&] {
        SignalStorm::pass();
        first->getOutputStream()->write("late", 4);
    });
    EXPECT_EQ(read(*input), "late");
    other.join();

    // One connection fills the queue, and the second waits until there is room.
    std::atomic<bool> isFull {false};
    other = std::jthread([&] {
        while (!isFull)
            std::this_thread::yield();
        SignalStorm::pass();
        for (int count = 0; count < 3; ++count)
            listener.accept();
    });
    first = new TcpSocket(u"127.0.0.1", listener.getPort());
    EXPECT_THROW(TcpSocket(u"127.0.0.1", listener.getPort(), 20), io::TimeoutException);
    TcpClientSocket2* made = nullptr;
    ASSERT_EQ(TcpClientSocket2::createTcpClientSocket2(AF_INET, SOCK_STREAM, 0, &made), VX_E_SOCKET_OK);
    const std::unique_ptr<TcpClientSocket2> limited(made);
    vx_sockaddr_union address {};
    address.in4.sin_family = AF_INET;
    address.in4.sin_port = htons(listener.getPort());
    address.in4.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    EXPECT_EQ(limited->connectFor(&address, sizeof address.in4, 20), VX_E_SOCKET_ETIMEDOUT);
    isFull = true;
    EXPECT_EQ(limited->connectFor(&address, sizeof address.in4, VX_WAIT_FOREVER), VX_E_SOCKET_OK) << "goes on";
    EXPECT_EQ(::fcntl(static_cast<int>(limited->getId()), F_GETFL) & O_NONBLOCK, 0);
    EXPECT_NO_THROW(TcpSocket(u"127.0.0.1", listener.getPort()));
}

TEST(TcpSocket, SaysWhatFailed)
{
    const int deaf = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0); // keeps the port in use
    sockaddr_in address {};
    address.sin_family = AF_INET;
    socklen_t length = sizeof address;
    ASSERT_EQ(::bind(deaf, reinterpret_cast<sockaddr*>(&address), length), 0);
    ASSERT_EQ(::getsockname(deaf, reinterpret_cast<sockaddr*>(&address), &length), 0);
    const unsigned short port = ntohs(address.sin_port);
    EXPECT_EQ(saidBy<Exception>([&] { TcpServerSocket(port, 1); }), "TcpServerSocket: Address already in use");
    const std::string unable = "TcpSocket::TcpSocket Unable to connect to ";
    EXPECT_EQ(saidBy<Exception>([&] { TcpSocket(u"127.0.0.1", port); }),
        unable + "127.0.0.1 ECONNREFUSED No connection could be made because the target machine actively refused it. ");
    const String cut(u"127.0.0.1\0.evil"sv);
    EXPECT_EQ(saidBy<Exception>([&] { TcpSocket(cut, port); }), (u"Unknown host: " + cut).toUtf8());
    const std::string noRoute = saidBy<Exception>([] { TcpSocket(u"224.0.0.1", 9); });
    EXPECT_TRUE(noRoute.starts_with(unable + "224.0.0.1 ENETUNREACH ")) << noRoute;
    ::close(deaf);
}

TEST(TcpSocket, TellsThePeerAndTheCauseOfItsFailures)
{
    const auto failureOf = [](const std::function<void()>& work) -> std::pair<std::string, std::error_code> {
        try {
            work();
        } catch (const Exception& failure) {
            return {explain(failure).toUtf8(), errorCodeOf(failure)};
        }
        return {"nothing was thrown", {}};
    };
    std::string place;
    {
        const TcpServerSocket free(0, 1);
        place = "127.0.0.1:" + std::to_string(free.getPort());
        const auto busy = failureOf([&] { TcpServerSocket(free.getPort(), 1); });
        EXPECT_TRUE(busy.first.starts_with("listen on 0.0.0.0:" + std::to_string(free.getPort()) + ": ")) << busy.first;
        EXPECT_EQ(busy.second, std::errc::address_in_use);
    }
    const auto noRoute = failureOf([] { TcpSocket(u"224.0.0.1", 9); });
    EXPECT_EQ(noRoute.first,
        "connect to 224.0.0.1:9: TcpSocket::TcpSocket Unable to connect to 224.0.0.1 ENETUNREACH A socket operation "
        "was "
        "attempted to an unreachable network.");
    EXPECT_EQ(noRoute.second, std::errc::network_unreachable);
    EXPECT_EQ(
        failureOf([] { TcpSocket(u"no.such.host.invalid", 9); }).second.value() >> 16, VX_E_SOCKET_EAI_NONAME >> 16);

    Connection both;
    both.client->setSoTimeout(1);
    EXPECT_EQ(failureOf([&] { read(*both.client->getInputStream()); }).second, std::errc::timed_out);
    both.server = nullptr;
    EXPECT_EQ(failureOf([&] {
        for (;;) // the first bytes make the peer refuse them
            both.client->getOutputStream()->write("x", 1);
    }).second,
        std::errc::connection_reset);
}

TEST(TcpSocket, IsClosedWhereMemoryIsShort)
{
    const auto before = openDescriptors();
    const int failures = failEachAllocation(
        [] {
            TcpServerSocket listener(0, 5);
            const Reference<TcpSocket> client(new TcpSocket(u"127.0.0.1", listener.getPort()));
            listener.accept();
        },
        [&](int failing) { EXPECT_EQ(openDescriptors(), before) << failing; });
    EXPECT_GT(failures, 5) << "three sockets, and what owns them";
}

} // namespace
} // namespace vx::net
