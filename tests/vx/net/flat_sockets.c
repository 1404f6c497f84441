/* A client and a server through the flat functions alone. */
#define _DEFAULT_SOURCE /* the C library's own declarations beside those of the language */
#include <vx/Library.h>
#include <vx/net/SocketFunctions.h>

#include <arpa/inet.h>
#include <netdb.h>
#include <netinet/tcp.h>
#include <stdio.h>
#include <string.h>
#include <sys/time.h>
#include <unistd.h>

#define CHECK(condition)                                                                                               \
    do {                                                                                                               \
        if (!(condition)) {                                                                                            \
            fprintf(stderr, "line %d: %s\n", __LINE__, #condition);                                                    \
            return 1;                                                                                                  \
        }                                                                                                              \
    } while (0)

static int transfer(VxNetTcpWorkerSocket* from, VxNetTcpWorkerSocket* to, const char* text)
{
    char buffer[64];
    int32_t count = 0;
    VxNetTcpWorkerSocket* waiting[1];
    uint32_t one = 1;
    uint32_t none[2] = {0, 0};
    struct timeval time = {10, 0};
    int32_t ready = 0;
    strcpy(buffer, text);
    CHECK(VxNetTcpWorkerSocketSend(from, buffer, (unsigned)strlen(text), 0, &count) == VX_E_SOCKET_OK);
    waiting[0] = to;
    CHECK(VxNetTcpWorkerSocketStaticSelect(waiting, &one, NULL, &none[0], NULL, &none[1], &time, &ready) == 0);
    CHECK(one == 1 && ready == 1);
    memset(buffer, 0, sizeof buffer);
    CHECK(VxNetTcpWorkerSocketRecv(to, buffer, sizeof buffer, 0, &count) == VX_E_SOCKET_OK);
    CHECK(count == (int32_t)strlen(text) && strcmp(buffer, text) == 0);
    return 0;
}

static int talk(void)
{
    VxNetTcpServerSocket* server = NULL;
    VxNetTcpClientSocket* client = NULL;
    VxNetTcpWorkerSocket* worker = NULL;
    union vx_sockaddr_union address;
    unsigned int length = sizeof address;
    uint32_t index;
    char text[64];
    char byte;
    int32_t count = 0;
    short answer = 0;

    CHECK(VxNetTcpServerSocketStaticCreate(AF_UNSPEC, SOCK_STREAM, 0, &server) == VX_E_SOCKET_OK);
    CHECK(VxNetTcpServerSocketBindListAddAddrAny(server, 0) == VX_E_SOCKET_OK);
    CHECK(VxNetTcpServerSocketBind(server) == VX_E_SOCKET_OK);
    CHECK(VxNetTcpServerSocketListen(server, 0) == VX_E_SOCKET_OK);
    CHECK(VxNetTcpServerSocketSaveBoundAddresses(server) == VX_E_SOCKET_OK);
    for (index = 0;; ++index) {
        length = sizeof address;
        CHECK(VxNetTcpServerSocketGetBoundAddress(server, index, (signed char*)&address, &length) == VX_E_SOCKET_OK);
        if (address.generic.sa_family == AF_INET)
            break;
    }
    CHECK(VxNetInetAddressIsAddressAny(&address, &answer) == VX_E_SOCKET_OK && answer == 1);
    address.in4.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    length = sizeof text;
    CHECK(VxNetInetAddressGetAddressStr(&address, text, &length) == VX_E_SOCKET_OK && strcmp(text, "127.0.0.1") == 0);

    CHECK(VxNetTcpClientSocketStaticCreate(AF_INET, SOCK_STREAM, 0, &client) == VX_E_SOCKET_OK);
    CHECK(VxNetTcpClientSocketConnect(client, &address, sizeof address.in4) == VX_E_SOCKET_OK);
    CHECK(VxNetTcpServerSocketAccept(server, &worker) == VX_E_SOCKET_OK && worker != NULL);
    CHECK(transfer((VxNetTcpWorkerSocket*)client, worker, "question") == 0);
    CHECK(transfer(worker, (VxNetTcpWorkerSocket*)client, "answer") == 0);
    CHECK(VxNetTcpSocketShutdownOutput((VxNetTcpSocket*)client) == VX_E_SOCKET_OK);
    CHECK(VxNetTcpWorkerSocketRecv(worker, &byte, 1, 0, &count) == VX_E_SOCKET_OK && count == 0);

    CHECK(VxNetTcpSocketClose((VxNetTcpSocket*)client) == VX_E_SOCKET_OK);
    CHECK(VxNetTcpSocketGetId((VxNetTcpSocket*)client) == 0);
    CHECK(VxNetTcpSocketStaticDestroy((VxNetTcpSocket**)&client) == VX_E_SOCKET_OK && client == NULL);
    CHECK(VxNetTcpSocketStaticDestroy((VxNetTcpSocket**)&worker) == VX_E_SOCKET_OK);
    CHECK(VxNetTcpSocketStaticDestroy((VxNetTcpSocket**)&server) == VX_E_SOCKET_OK);
    CHECK(VxNetTcpSocketClose(NULL) == VX_E_SOCKET_EINVAL);
    return 0;
}

/* Every other row, each with a result that no other row would give. */
static int others(void)
{
    VxNetTcpServerSocket* server = NULL;
    VxNetTcpClientSocket* client = NULL;
    union vx_sockaddr_union address;
    struct addrinfo hints;
    char text[200];
    uint32_t size = sizeof text;
    uint32_t index = 0;
    unsigned int length = sizeof address;
    unsigned int accepted = 0;
    unsigned short port = 0;
    int32_t major = 0;
    int32_t minor = 0;
    int32_t count = 0;
    int value = 1;
    int value_length = sizeof value;
    uint32_t one = 1;
    uint32_t none[2] = {0, 0};
    struct timeval at_once = {0, 0};
    VxNetTcpWorkerSocket* waiting[1];
    char byte = 'x';
    short answer = 1;

    CHECK(VxNetTcpSocketStaticInit() == VX_E_SOCKET_OK && VxNetTcpSocketStaticUninit() == VX_E_SOCKET_OK);
    CHECK(VxNetTcpSocketStaticGetVersion(&major, &minor) == VX_E_SOCKET_OK && major == 2);
    CHECK(VxNetInetSocketAddressStaticGetPortHostOrderFromTcpServiceName("http", &port) == VX_E_SOCKET_OK);
    CHECK(port == 80);
    memset(&hints, 0, sizeof hints);
    hints.ai_family = AF_INET;
    hints.ai_socktype = SOCK_STREAM;
    CHECK(VxNetTcpSocketStaticGetaddrinfo("127.0.0.1", 9, &hints, 0, &address) == VX_E_SOCKET_OK);
    CHECK(VxNetInetAddressIsAddressNone(&address, &answer) == VX_E_SOCKET_OK && answer == 0);
    CHECK(VxNetInetAddressIsAddressLoopback(&address, &answer) == VX_E_SOCKET_OK && answer == 1);

    CHECK(VxNetTcpServerSocketStaticCreate(AF_INET, SOCK_STREAM, 0, &server) == VX_E_SOCKET_OK);
    CHECK(VxNetTcpServerSocketBindListAddAddrInfo(server, "127.0.0.1, 127.0.0.2", NULL, 9) == VX_E_SOCKET_OK);
    CHECK(VxNetTcpServerSocketBindListAddressesDiagnosticStrA(server, text, &size) == VX_E_SOCKET_OK);
    CHECK(strcmp(text, "127.0.0.1:9; 127.0.0.2:9") == 0);
    CHECK(VxNetTcpServerSocketBindListClear(server) == VX_E_SOCKET_OK);
    CHECK(VxNetTcpServerSocketBindListAddAddrInfo(server, "127.0.0.3", NULL, 9) == VX_E_SOCKET_OK);
    CHECK(VxNetTcpServerSocketBindListSaveOneForNamedPipeReply(server) == VX_E_SOCKET_OK);
    CHECK(VxNetTcpServerSocketSaveBoundAddresses(server) == VX_E_SOCKET_OK);
    size = sizeof text;
    CHECK(VxNetTcpServerSocketBoundListAddressesDiagnosticStrA(server, text, &size) == VX_E_SOCKET_OK);
    CHECK(strcmp(text, "127.0.0.3:9") == 0);
    CHECK(VxNetTcpSocketStaticDestroy((VxNetTcpSocket**)&server) == VX_E_SOCKET_OK);

    CHECK(VxNetTcpServerSocketStaticCreate(AF_INET, SOCK_STREAM, 0, &server) == VX_E_SOCKET_OK);
    CHECK(VxNetTcpServerSocketBindListAddAddrAny(server, 0) == VX_E_SOCKET_OK);
    CHECK(VxNetTcpServerSocketBind(server) == VX_E_SOCKET_OK);
    CHECK(VxNetTcpServerSocketListen(server, 5) == VX_E_SOCKET_OK);
    CHECK(VxNetTcpServerSocketSaveBoundAddresses(server) == VX_E_SOCKET_OK);
    do {
        length = sizeof address;
        CHECK(VxNetTcpServerSocketGetBoundAddress(server, index++, (signed char*)&address, &length) == VX_E_SOCKET_OK);
    } while (address.generic.sa_family != AF_INET);
    address.in4.sin_addr.s_addr = htonl(INADDR_LOOPBACK);

    CHECK(VxNetTcpClientSocketStaticCreate(AF_INET, SOCK_STREAM, 0, &client) == VX_E_SOCKET_OK);
    {
        union vx_sockaddr_union own = address;
        own.in4.sin_port = 0;
        CHECK(VxNetTcpClientSocketBind(client, &own, sizeof own.in4) == VX_E_SOCKET_OK);
        CHECK(VxNetTcpClientSocketConnect(client, &address, sizeof address.in4) == VX_E_SOCKET_OK);
        value_length = sizeof own;
        CHECK(VxNetTcpClientSocketGetLocalAddress(client, &own, &value_length) == VX_E_SOCKET_OK);
        CHECK(own.in4.sin_port != 0 && own.in4.sin_port != address.in4.sin_port);
    }
    CHECK(VxNetTcpServerSocketAcceptSocket(server, &accepted) == VX_E_SOCKET_OK);

    waiting[0] = (VxNetTcpWorkerSocket*)client;
    CHECK(VxNetTcpWorkerSocketSetsockopt(waiting[0], IPPROTO_TCP, TCP_NODELAY, (char*)&value, sizeof value) == 0);
    value = 0;
    value_length = sizeof value;
    CHECK(VxNetTcpWorkerSocketGetsockopt(waiting[0], IPPROTO_TCP, TCP_NODELAY, (char*)&value, &value_length) == 0);
    CHECK(value != 0);
    value = 0;
    CHECK(VxNetTcpClientSocketSetsockopt(waiting[0], IPPROTO_TCP, TCP_NODELAY, (char*)&value, sizeof value) == 0);
    value = 1;
    CHECK(VxNetTcpClientSocketGetsockopt(waiting[0], IPPROTO_TCP, TCP_NODELAY, (char*)&value, &value_length) == 0);
    CHECK(value == 0);

    CHECK(VxNetTcpClientSocketStaticSelect(waiting, &one, NULL, &none[0], NULL, &none[1], &at_once, &major) == 0);
    CHECK(one == 0 && major == 0);
    CHECK(VxNetTcpClientSocketSend(waiting[0], &byte, 1, 0, &count) == VX_E_SOCKET_OK && count == 1);
    byte = 0;
    CHECK(read((int)accepted, &byte, 1) == 1 && byte == 'x' && write((int)accepted, "y", 1) == 1);
    CHECK(VxNetTcpClientSocketRecv(waiting[0], &byte, 1, 0, &count) == VX_E_SOCKET_OK && count == 1 && byte == 'y');
    CHECK(VxNetTcpSocketShutdownInput((VxNetTcpSocket*)client) == VX_E_SOCKET_OK);
    CHECK(VxNetTcpClientSocketSend(waiting[0], &byte, 1, 0, &count) == VX_E_SOCKET_OK);
    CHECK(VxNetTcpSocketShutdownBoth((VxNetTcpSocket*)client) == VX_E_SOCKET_OK);
    CHECK(VxNetTcpClientSocketSend(waiting[0], &byte, 1, 0, &count) != VX_E_SOCKET_OK);
    close((int)accepted);
    CHECK(VxNetTcpSocketStaticDestroy((VxNetTcpSocket**)&client) == VX_E_SOCKET_OK);
    CHECK(VxNetTcpSocketStaticDestroy((VxNetTcpSocket**)&server) == VX_E_SOCKET_OK);

    CHECK(VxNetTcpSocketShutdownInput(NULL) == VX_E_SOCKET_EINVAL);
    CHECK(VxNetTcpSocketShutdownBoth(NULL) == VX_E_SOCKET_EINVAL);
    CHECK(VxNetTcpServerSocketBindListClear(NULL) == VX_E_SOCKET_EINVAL);
    CHECK(VxNetTcpClientSocketBind(NULL, &address, sizeof address.in4) == VX_E_SOCKET_EINVAL);
    CHECK(VxNetTcpServerSocketAcceptSocket(NULL, &accepted) == VX_E_SOCKET_EINVAL);
    return 0;
}

int main(void)
{
    CHECK(VXLIBLibInit() == 0);
    CHECK(talk() == 0);
    CHECK(others() == 0);
    CHECK(VXLIBLibUninit() == 0);
    return 0;
}
