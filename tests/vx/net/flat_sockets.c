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

/* Sends a letter and waits for it at the other end. */
static int transfer(VxNetTcpWorkerSocket* from, VxNetTcpWorkerSocket* to, char letter)
{
    char byte = letter;
    int32_t count = 0;
    int32_t ready = 0;
    uint32_t one = 1;
    uint32_t none[2] = {0, 0};
    struct timeval time = {10, 0};
    CHECK(VxNetTcpWorkerSocketSend(from, &byte, 1, 0, &count) == VX_E_SOCKET_OK && count == 1);
    CHECK(VxNetTcpWorkerSocketStaticSelect(&to, &one, NULL, &none[0], NULL, &none[1], &time, &ready) == 0);
    CHECK(one == 1 && ready == 1);
    byte = 0;
    CHECK(VxNetTcpWorkerSocketRecv(to, &byte, 1, 0, &count) == VX_E_SOCKET_OK && count == 1 && byte == letter);
    time.tv_sec = 0;
    CHECK(VxNetTcpClientSocketStaticSelect(&to, &one, NULL, &none[0], NULL, &none[1], &time, &ready) == 0);
    CHECK(one == 0 && ready == 0);
    return 0;
}

/* What needs no connection. */
static int prepare(void)
{
    VxNetTcpServerSocket* server = NULL;
    union vx_sockaddr_union address;
    struct addrinfo hints;
    char text[200];
    uint32_t size = sizeof text;
    unsigned int accepted = 0;
    unsigned short port = 0;
    int32_t major = 0;
    int32_t minor = 0;
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
    CHECK(VxNetTcpSocketStaticDestroy((VxNetTcpSocket**)&server) == VX_E_SOCKET_OK && server == NULL);

    CHECK(VxNetTcpSocketClose(NULL) == VX_E_SOCKET_EINVAL);
    CHECK(VxNetTcpSocketShutdownInput(NULL) == VX_E_SOCKET_EINVAL);
    CHECK(VxNetTcpSocketShutdownBoth(NULL) == VX_E_SOCKET_EINVAL);
    CHECK(VxNetTcpServerSocketBindListClear(NULL) == VX_E_SOCKET_EINVAL);
    CHECK(VxNetTcpClientSocketBind(NULL, &address, sizeof address.in4) == VX_E_SOCKET_EINVAL);
    CHECK(VxNetTcpServerSocketAcceptSocket(NULL, &accepted) == VX_E_SOCKET_EINVAL);
    return 0;
}

static int talk(void)
{
    VxNetTcpServerSocket* server = NULL;
    VxNetTcpClientSocket* client = NULL;
    VxNetTcpWorkerSocket *client_end, *worker = NULL;
    union vx_sockaddr_union address, own;
    uint32_t index = 0;
    unsigned int length;
    unsigned int accepted = 0;
    char text[64];
    uint32_t size = sizeof text;
    int value = 1;
    int value_length = sizeof own;
    int32_t count = 0;
    char byte = 'x';
    short answer = 0;

    CHECK(VxNetTcpServerSocketStaticCreate(AF_INET, SOCK_STREAM, 0, &server) == VX_E_SOCKET_OK);
    CHECK(VxNetTcpServerSocketBindListAddAddrAny(server, 0) == VX_E_SOCKET_OK);
    CHECK(VxNetTcpServerSocketBind(server) == VX_E_SOCKET_OK);
    CHECK(VxNetTcpServerSocketListen(server, 5) == VX_E_SOCKET_OK);
    CHECK(VxNetTcpServerSocketSaveBoundAddresses(server) == VX_E_SOCKET_OK);
    do {
        length = sizeof address;
        CHECK(VxNetTcpServerSocketGetBoundAddress(server, index++, (signed char*)&address, &length) == VX_E_SOCKET_OK);
    } while (address.generic.sa_family != AF_INET);
    CHECK(VxNetInetAddressIsAddressAny(&address, &answer) == VX_E_SOCKET_OK && answer == 1);
    address.in4.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    CHECK(VxNetInetAddressGetAddressStr(&address, text, &size) == VX_E_SOCKET_OK && strcmp(text, "127.0.0.1") == 0);

    CHECK(VxNetTcpClientSocketStaticCreate(AF_INET, SOCK_STREAM, 0, &client) == VX_E_SOCKET_OK);
    client_end = (VxNetTcpWorkerSocket*)client;
    own = address;
    own.in4.sin_port = 0;
    CHECK(VxNetTcpClientSocketBind(client, &own, sizeof own.in4) == VX_E_SOCKET_OK);
    CHECK(VxNetTcpClientSocketConnect(client, &address, sizeof address.in4) == VX_E_SOCKET_OK);
    CHECK(VxNetTcpClientSocketGetLocalAddress(client, &own, &value_length) == VX_E_SOCKET_OK);
    CHECK(own.in4.sin_port != 0 && own.in4.sin_port != address.in4.sin_port);
    CHECK(VxNetTcpServerSocketAccept(server, &worker) == VX_E_SOCKET_OK && worker != NULL);
    CHECK(transfer(client_end, worker, 'q') == 0 && transfer(worker, client_end, 'a') == 0);

    CHECK(VxNetTcpWorkerSocketSetsockopt(client_end, IPPROTO_TCP, TCP_NODELAY, (char*)&value, sizeof value) == 0);
    value = 0;
    value_length = sizeof value;
    CHECK(VxNetTcpWorkerSocketGetsockopt(client_end, IPPROTO_TCP, TCP_NODELAY, (char*)&value, &value_length) == 0);
    CHECK(value != 0);
    value = 0;
    CHECK(VxNetTcpClientSocketSetsockopt(client_end, IPPROTO_TCP, TCP_NODELAY, (char*)&value, sizeof value) == 0);
    value = 1;
    CHECK(VxNetTcpClientSocketGetsockopt(client_end, IPPROTO_TCP, TCP_NODELAY, (char*)&value, &value_length) == 0);
    CHECK(value == 0);

    CHECK(VxNetTcpSocketShutdownOutput((VxNetTcpSocket*)client) == VX_E_SOCKET_OK);
    CHECK(VxNetTcpWorkerSocketRecv(worker, &byte, 1, 0, &count) == VX_E_SOCKET_OK && count == 0);
    CHECK(VxNetTcpSocketClose((VxNetTcpSocket*)client) == VX_E_SOCKET_OK);
    CHECK(VxNetTcpSocketGetId((VxNetTcpSocket*)client) == 0);
    CHECK(VxNetTcpSocketStaticDestroy((VxNetTcpSocket**)&client) == VX_E_SOCKET_OK && client == NULL);
    CHECK(VxNetTcpSocketStaticDestroy((VxNetTcpSocket**)&worker) == VX_E_SOCKET_OK);

    CHECK(VxNetTcpClientSocketStaticCreate(AF_INET, SOCK_STREAM, 0, &client) == VX_E_SOCKET_OK);
    client_end = (VxNetTcpWorkerSocket*)client;
    CHECK(VxNetTcpClientSocketConnect(client, &address, sizeof address.in4) == VX_E_SOCKET_OK);
    CHECK(VxNetTcpServerSocketAcceptSocket(server, &accepted) == VX_E_SOCKET_OK);
    CHECK(VxNetTcpClientSocketSend(client_end, &byte, 1, 0, &count) == VX_E_SOCKET_OK && count == 1);
    CHECK(read((int)accepted, &byte, 1) == 1 && byte == 'x' && write((int)accepted, "y", 1) == 1);
    CHECK(VxNetTcpClientSocketRecv(client_end, &byte, 1, 0, &count) == VX_E_SOCKET_OK && count == 1 && byte == 'y');
    CHECK(VxNetTcpSocketShutdownInput((VxNetTcpSocket*)client) == VX_E_SOCKET_OK);
    CHECK(VxNetTcpClientSocketSend(client_end, &byte, 1, 0, &count) == VX_E_SOCKET_OK);
    CHECK(VxNetTcpSocketShutdownBoth((VxNetTcpSocket*)client) == VX_E_SOCKET_OK);
    CHECK(VxNetTcpClientSocketSend(client_end, &byte, 1, 0, &count) != VX_E_SOCKET_OK);
    close((int)accepted);
    CHECK(VxNetTcpSocketStaticDestroy((VxNetTcpSocket**)&client) == VX_E_SOCKET_OK);
    CHECK(VxNetTcpSocketStaticDestroy((VxNetTcpSocket**)&server) == VX_E_SOCKET_OK);
    return 0;
}

int main(void)
{
    CHECK(VXLIBLibInit() == 0);
    CHECK(prepare() == 0);
    CHECK(talk() == 0);
    CHECK(VXLIBLibUninit() == 0);
    return 0;
}
