/* A client and a server through the flat functions alone. */
#include <vx/Library.h>
#include <vx/net/SocketFunctions.h>

#include <arpa/inet.h>
#include <stdio.h>
#include <string.h>
#include <sys/time.h>

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

int main(void)
{
    CHECK(VXLIBLibInit() == 0);
    CHECK(talk() == 0);
    CHECK(VXLIBLibUninit() == 0);
    return 0;
}
