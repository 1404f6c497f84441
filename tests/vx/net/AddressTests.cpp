#include "vx/String.h"
#include "vx/net/InetSocketAddress.h"
#include "vx/net/SocketFunctions.h"
#include "vx/net/SocketResult.h"

#include <gtest/gtest.h>

#include <arpa/inet.h>
#include <cerrno>
#include <cstring>
#include <memory>
#include <string>

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
    } cases[] = {
        {0, VX_E_SOCKET_OK, VX_E_SOCKET_OK},
        {10004, VX_E_SOCKET_EINTR, VX_E_SOCKET_EINTR},
        {10005, GENERIC, GENERIC},
        {10010, GENERIC, GENERIC},
        {10060, VX_E_SOCKET_ETIMEDOUT, VX_E_SOCKET_ETIMEDOUT},
        {10072, GENERIC, GENERIC},
        {10112, VX_E_SOCKET_EREFUSED, VX_E_SOCKET_EREFUSED},
        {10113, GENERIC, GENERIC},
        {13001, GENERIC, VX_E_SOCKET_EAI_NONAME},
        {2008, GENERIC, VX_E_SOCKET_EAI_MEMORY},
        {-10004, GENERIC, GENERIC},
        {0x10000 + 10004, GENERIC, GENERIC},
    };
    for (const auto& row : cases) {
        EXPECT_EQ(VX_E_SOCKETFromNativeSocketError(row.native), row.socket) << row.native;
        EXPECT_EQ(VX_E_SOCKETFromNativeEaiSocketError(row.native), row.lookUp) << row.native;
    }
    EXPECT_EQ(static_cast<std::uint32_t>(VX_E_SOCKET_EREFUSED), 0x8BE32780U);
    EXPECT_EQ(static_cast<std::uint32_t>(VX_E_SOCKET_EAI_NODATA), 0x8BE336B1U);

    const auto textOf = [](std::uint32_t value) {
        return String(VXGetDescriptionFromVX_E_SOCKET(static_cast<ENUM_VX_E_SOCKET>(value)));
    };
    EXPECT_EQ(textOf(0), u"OK");
    EXPECT_EQ(textOf(0x80004005), u"FAIL");
    EXPECT_EQ(textOf(0x8BE32781), u"FAIL");
    EXPECT_EQ(textOf(0x8BE32726), u"EINVAL An invalid argument was supplied. ");
    int texts = 0;
    for (std::uint32_t native = 1; native < 0x10000; ++native)
        texts += textOf(0x8BE30000 + native) != u"FAIL";
    EXPECT_EQ(texts, 71);

    for (const auto& [error, number] :
        {std::pair {EWOULDBLOCK, 10035}, {EPIPE, 10058}, {ENOMEM, 10055}, {EXDEV, 10107}}) {
        errno = error;
        EXPECT_EQ(VXLastNativeSocketError(), number);
    }
}

TEST(InetAddress, AnswersByItsFamily)
{
    struct {
        const char* text;
        short any, loopback, none;
    } cases[] = {
        {"0.0.0.0", 1, 0, 0},
        {"127.0.0.1", 0, 1, 0},
        {"127.0.0.2", 0, 0, 0},
        {"255.255.255.255", 0, 0, 1},
        {"192.0.2.1", 0, 0, 0},
        {"::", 1, 0, 0},
        {"::1", 0, 1, 0},
        {"ffff:ffff:ffff:ffff:ffff:ffff:ffff:ffff", 0, 0, 0},
        {"2001:db8::1", 0, 0, 0},
    };
    for (const auto& row : cases) {
        const vx_sockaddr_union storage = addressOf(row.text, 80);
        InetAddress* made = nullptr;
        ASSERT_EQ(InetAddress::create(&storage, &made), VX_E_SOCKET_OK);
        const std::unique_ptr<InetAddress> address(made);
        EXPECT_EQ(address->isAddressAny(), row.any) << row.text;
        EXPECT_EQ(address->isAddressLoopback(), row.loopback) << row.text;
        EXPECT_EQ(address->isAddressNone(), row.none) << row.text;
        String text(u"at ");
        EXPECT_EQ(address->getAddressStr(text), VX_E_SOCKET_OK);
        EXPECT_EQ(text, u"at " + String(row.text));
        short answer = 7;
        EXPECT_EQ(VxNetInetAddressIsAddressLoopback(&storage, &answer), VX_E_SOCKET_OK);
        EXPECT_EQ(answer, row.loopback);

        unsigned int wanted = 0;
        EXPECT_EQ(address->getAddressBinaryLength(&wanted), VX_E_SOCKET_OK);
        signed char bytes[16] = {};
        unsigned int length = wanted - 1;
        EXPECT_EQ(address->getAddressBinary(bytes, &length), VX_E_SOCKET_EMSGSIZE);
        EXPECT_EQ(length, wanted);
        EXPECT_EQ(bytes[0], 0) << "nothing is copied";
        EXPECT_EQ(address->getAddressBinary(bytes, &length), VX_E_SOCKET_OK);
        EXPECT_EQ(address->getAddressBinary(nullptr, &length), VX_E_SOCKET_EINVAL);

        address->setAddressAny();
        vx_sockaddr_union copy {};
        length = sizeof copy;
        EXPECT_EQ(address->getStorageBinary(&copy, &length), VX_E_SOCKET_OK);
        EXPECT_EQ(address->isAddressAny(), 1);
        EXPECT_EQ(copy.in4.sin_port, htons(80));
        EXPECT_EQ(copy.generic.sa_family, storage.generic.sa_family);
    }

    vx_sockaddr_union foreign {};
    foreign.generic.sa_family = AF_UNIX;
    InetAddress* none = nullptr;
    EXPECT_EQ(InetAddress::create(&foreign, &none), VX_E_SOCKET_EINVAL);
    EXPECT_EQ(none, nullptr);
    EXPECT_EQ(InetAddress::create(static_cast<const vx_sockaddr_union*>(nullptr), &none), VX_E_SOCKET_EINVAL);
    ENUM_VX_E_SOCKET status = VX_E_SOCKET_EFAULT;
    const Inet4Address zero(nullptr, &status);
    unsigned short family = 1;
    EXPECT_EQ(status, VX_E_SOCKET_OK);
    EXPECT_EQ(zero.getFamily(&family), VX_E_SOCKET_OK);
    EXPECT_EQ(family, 0);
    String text;
    EXPECT_NE(zero.getAddressStr(text), VX_E_SOCKET_OK);
    EXPECT_TRUE(text.startsWith(u"native error ")) << text;
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
    unsigned short family = 0;
    EXPECT_EQ(nothing.getFamily(&family), VX_E_SOCKET_EFAULT);
    const InetSocketAddress null(static_cast<const vx_sockaddr_union*>(nullptr), &status);
    EXPECT_EQ(status, VX_E_SOCKET_EINVAL);

    unsigned short port = 7;
    EXPECT_EQ(InetSocketAddress::getPortHostOrderFromTcpServiceName("", &port), VX_E_SOCKET_OK);
    EXPECT_EQ(port, 0);
    EXPECT_NE(InetSocketAddress::getPortHostOrderFromTcpServiceName("no-such-service", &port), VX_E_SOCKET_OK);
    EXPECT_EQ(InetSocketAddress::getPortHostOrderFromTcpServiceName(nullptr, &port), VX_E_SOCKET_EINVAL);
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
            EXPECT_EQ(result, VX_E_SOCKET_EFAULT) << room;
            EXPECT_EQ(length, 0U);
            EXPECT_EQ(text[0], room == 0 ? 'x' : '\0');
        } else {
            EXPECT_EQ(result, VX_E_SOCKET_OK) << room;
            EXPECT_STREQ(text, "127.0.0.1:8080");
        }
        EXPECT_EQ(text[std::max(room, 15U)], 'x');
    }
    unsigned int length = sizeof text;
    const vx_sockaddr_union foreign {};
    EXPECT_EQ(VxNetInetAddressGetAddressStr(&foreign, text, &length), VX_E_SOCKET_EINVAL);
    EXPECT_STREQ(text, "");
    EXPECT_EQ(VxNetInetAddressGetAddressStr(&address, text, nullptr), VX_E_SOCKET_EINVAL);
    EXPECT_EQ(VxNetInetAddressGetAddressStr(&address, nullptr, &length), VX_E_SOCKET_EINVAL);
    short answer = 1;
    EXPECT_EQ(VxNetInetAddressIsAddressAny(&foreign, &answer), VX_E_SOCKET_EINVAL);
    EXPECT_EQ(answer, 0);
}

} // namespace
} // namespace vx::net
