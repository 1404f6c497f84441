#include "tests/vx/Common.h"
#include "vx/net/InetSocketAddress.h"
#include "vx/net/SocketFunctions.h"
#include "vx/net/SocketResult.h"

#include <arpa/inet.h>
#include <cerrno>
#include <cstring>
#include <netdb.h>

namespace vx::net {
namespace {

vx_sockaddr_union addressOf(const char* text, unsigned short port)
{
    vx_sockaddr_union address {};
    if (::inet_pton(AF_INET, text, &address.in4.sin_addr) == 1)
        address.in4.sin_family = AF_INET;
    else if (::inet_pton(AF_INET6, text, &address.in6.sin6_addr) == 1)
        address.in6.sin6_family = AF_INET6;
    address.in4.sin_port = htons(port);
    return address;
}

std::string diagnosticOf(const InetSocketAddress& address)
{
    String text;
    address.getDiagnosticStr(text);
    return text.toUtf8();
}

TEST(SocketResult, MapsNumbersBothWays)
{
    constexpr auto GENERIC = static_cast<ENUM_VX_E_SOCKET>(0x80004005);
    struct {
        int native;
        ENUM_VX_E_SOCKET socket, lookUp;
    } cases[] = {{0, VX_E_SOCKET_OK, VX_E_SOCKET_OK}, {10004, VX_E_SOCKET_EINTR, VX_E_SOCKET_EINTR},
        {10005, GENERIC, GENERIC}, {10010, GENERIC, GENERIC}, {10060, VX_E_SOCKET_ETIMEDOUT, VX_E_SOCKET_ETIMEDOUT},
        {10072, GENERIC, GENERIC}, {10112, VX_E_SOCKET_EREFUSED, VX_E_SOCKET_EREFUSED}, {10113, GENERIC, GENERIC},
        {13001, GENERIC, VX_E_SOCKET_EAI_NONAME}, {2008, GENERIC, VX_E_SOCKET_EAI_MEMORY}, {-10004, GENERIC, GENERIC},
        {0x10000 + 10004, GENERIC, GENERIC}};
    for (const auto& row : cases) {
        EXPECT_EQ(VX_E_SOCKETFromNativeSocketError(row.native), row.socket) << row.native;
        EXPECT_EQ(VX_E_SOCKETFromNativeEaiSocketError(row.native), row.lookUp) << row.native;
    }

    for (const auto& [error, number] :
        {std::pair {EWOULDBLOCK, 10035}, {EPIPE, 10058}, {ENOMEM, 10055}, {EXDEV, 10107}}) {
        errno = error;
        EXPECT_EQ(VXLastNativeSocketError(), number);
    }
}

TEST(InetAddress, AnswersByItsFamily)
{
    const std::pair<const char*, std::string> cases[]
        = {{"0.0.0.0", "100"}, {"127.0.0.1", "010"}, {"127.0.0.2", "000"}, {"255.255.255.255", "001"}, {"::", "100"},
            {"::1", "010"}, {"ffff:ffff:ffff:ffff:ffff:ffff:ffff:ffff", "000"}, {"2001:db8::1", "000"}};
    for (const auto& [name, answers] : cases) { // whether it is any, the loopback, or none
        const vx_sockaddr_union storage = addressOf(name, 80);
        InetAddress* made = nullptr;
        ASSERT_EQ(InetAddress::create(&storage, &made), VX_E_SOCKET_OK);
        const std::unique_ptr<InetAddress> address(made);
        std::string answered;
        for (const auto ask :
            {VxNetInetAddressIsAddressAny, VxNetInetAddressIsAddressLoopback, VxNetInetAddressIsAddressNone}) {
            short answer = 7;
            EXPECT_EQ(ask(&storage, &answer), VX_E_SOCKET_OK);
            answered += std::to_string(answer);
        }
        EXPECT_EQ(answered, answers) << name;
        String text(u"at ");
        EXPECT_EQ(address->getAddressStr(text), VX_E_SOCKET_OK);
        EXPECT_EQ(text, u"at " + String(name));

        address->setAddressAny();
        vx_sockaddr_union copy {};
        unsigned int length = sizeof copy;
        EXPECT_EQ(address->getStorageBinary(&copy, &length), VX_E_SOCKET_OK);
        EXPECT_EQ(address->isAddressAny(), 1);
        EXPECT_EQ(copy.in4.sin_port, htons(80));
    }

    vx_sockaddr_union foreign {};
    foreign.generic.sa_family = AF_UNIX;
    InetAddress* none = nullptr;
    EXPECT_EQ(InetAddress::create(&foreign, &none), VX_E_SOCKET_EINVAL);
    EXPECT_EQ(none, nullptr);
}

TEST(InetSocketAddress, PrintsItselfAndKeepsThePortsApart)
{
    ENUM_VX_E_SOCKET status = VX_E_SOCKET_EFAULT;
    const vx_sockaddr_union in4 = addressOf("192.0.2.1", 80);
    InetSocketAddress four(&in4, &status);
    EXPECT_EQ(status, VX_E_SOCKET_OK);
    EXPECT_EQ(diagnosticOf(four), "192.0.2.1:80");
    EXPECT_EQ(four.setPortHostOrder(99), VX_E_SOCKET_OK);
    EXPECT_EQ(diagnosticOf(four), "192.0.2.1:99");
    vx_sockaddr_union copy {};
    unsigned int length = sizeof copy;
    four.getAddress()->getStorageBinary(&copy, &length);
    EXPECT_EQ(copy.in4.sin_port, htons(80));
    const vx_sockaddr_union in6 = addressOf("::1", 65535);
    EXPECT_EQ(diagnosticOf(InetSocketAddress(&in6, &status)), "[::1]:65535");

    const vx_sockaddr_union foreign {};
    const InetSocketAddress nothing(&foreign, &status);
    EXPECT_EQ(status, VX_E_SOCKET_EINVAL);
    EXPECT_EQ(nothing.getAddress(), nullptr);
    EXPECT_EQ(diagnosticOf(nothing), "0address missing:0");

    unsigned short port = 7;
    EXPECT_EQ(InetSocketAddress::getPortHostOrderFromTcpServiceName("", &port), VX_E_SOCKET_OK);
    EXPECT_EQ(port, 0);
    EXPECT_EQ(VxNetInetSocketAddressStaticGetPortHostOrderFromTcpServiceName("http", &port), VX_E_SOCKET_OK);
    EXPECT_EQ(port, 80);
    EXPECT_NE(InetSocketAddress::getPortHostOrderFromTcpServiceName("no-such-service", &port), VX_E_SOCKET_OK);
    addrinfo hints {};
    hints.ai_family = AF_INET;
    hints.ai_socktype = SOCK_STREAM;
    EXPECT_EQ(VxNetTcpSocketStaticGetaddrinfo("127.0.0.1", 9, &hints, 0, &copy), VX_E_SOCKET_OK);
    EXPECT_EQ(diagnosticOf(InetSocketAddress(&copy, &status)), "127.0.0.1:9");
    std::int32_t major = 0, minor = 0;
    EXPECT_EQ(VxNetTcpSocketStaticGetVersion(&major, &minor), VX_E_SOCKET_OK);
    EXPECT_EQ(major, 2);
}

TEST(FlatAddressFunctions, WriteIntoTheRoomTheyAreGiven)
{
    const vx_sockaddr_union address = addressOf("127.0.0.1", 8080); // "127.0.0.1:8080" and its end take 15
    char text[32];
    for (unsigned int room = 0; room <= 20; ++room) {
        std::memset(text, 'x', sizeof text);
        unsigned int length = room;
        const ENUM_VX_E_SOCKET result = VxNetInetSocketAddressGetDiagnosticStr(&address, text, &length);
        if (room < 15) {
            EXPECT_TRUE(result == VX_E_SOCKET_EFAULT && length == 0) << room;
            EXPECT_EQ(text[0], '\0');
        } else {
            EXPECT_EQ(result, VX_E_SOCKET_OK) << room;
            EXPECT_STREQ(text, "127.0.0.1:8080");
        }
        EXPECT_EQ(text[std::max(room, 15U)], 'x');
    }
    unsigned int length = sizeof text;
    EXPECT_EQ(VxNetInetAddressGetAddressStr(&address, text, &length), VX_E_SOCKET_OK);
    EXPECT_STREQ(text, "127.0.0.1");
    const vx_sockaddr_union foreign {};
    EXPECT_EQ(VxNetInetAddressGetAddressStr(&foreign, text, &length), VX_E_SOCKET_EINVAL);
    EXPECT_STREQ(text, "");
}

} // namespace
} // namespace vx::net
