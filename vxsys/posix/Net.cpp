#include "vxsys/Net.h"

#include "vxsys/Result.h"

#include <cerrno>
#include <cstring>
#include <limits.h>
#include <netdb.h>
#include <netinet/in.h>
#include <strings.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

using namespace vxsys::results;

struct NumberRow {
    int native;
    std::int32_t number;
};

/// "Windows Sockets Error Codes" in the Windows documentation.
constexpr NumberRow SOCKET_NUMBERS[] = {
    {EINTR, 10004},
    {EBADF, 10009},
    {EACCES, 10013},
    {EPERM, 10013},
    {EFAULT, 10014},
    {EINVAL, 10022},
    {EMFILE, 10024},
    {ENFILE, 10024},
    {EWOULDBLOCK, 10035},
    {EINPROGRESS, 10036},
    {EALREADY, 10037},
    {ENOTSOCK, 10038},
    {EDESTADDRREQ, 10039},
    {EMSGSIZE, 10040},
    {EPROTOTYPE, 10041},
    {ENOPROTOOPT, 10042},
    {EPROTONOSUPPORT, 10043},
    {ESOCKTNOSUPPORT, 10044},
    {EOPNOTSUPP, 10045},
    {EPFNOSUPPORT, 10046},
    {EAFNOSUPPORT, 10047},
    {EADDRINUSE, 10048},
    {EADDRNOTAVAIL, 10049},
    {ENETDOWN, 10050},
    {ENETUNREACH, 10051},
    {ENETRESET, 10052},
    {ECONNABORTED, 10053},
    {ECONNRESET, 10054},
    {ENOBUFS, 10055},
    {ENOMEM, 10055},
    {EISCONN, 10056},
    {ENOTCONN, 10057},
    {ESHUTDOWN, 10058},
    {EPIPE, 10058}, // sending after a side has closed the connection
    {ETOOMANYREFS, 10059},
    {ETIMEDOUT, 10060},
    {ECONNREFUSED, 10061},
    {ELOOP, 10062},
    {ENAMETOOLONG, 10063},
    {EHOSTDOWN, 10064},
    {EHOSTUNREACH, 10065},
    {ENOTEMPTY, 10066},
    {EUSERS, 10068},
    {EDQUOT, 10069},
    {ESTALE, 10070},
    {EREMOTE, 10071},
    {ECANCELED, 10103},
};

constexpr std::int32_t SYSTEM_CALL_FAILURE = 10107;

constexpr NumberRow LOOK_UP_NUMBERS[] = {
    {EAI_MEMORY, VX_EAI_MEMORY},
    {EAI_BADFLAGS, VX_EAI_BADFLAGS},
    {EAI_SOCKTYPE, VX_EAI_SOCKTYPE},
    {EAI_FAMILY, VX_EAI_FAMILY},
    {EAI_SERVICE, VX_EAI_SERVICE},
    {EAI_NONAME, VX_EAI_NONAME},
    {EAI_AGAIN, VX_EAI_AGAIN},
    {EAI_FAIL, VX_EAI_FAIL},
#if defined(EAI_NODATA)
    {EAI_NODATA, VX_EAI_NODATA},
#endif
#if defined(EAI_ADDRFAMILY)
    {EAI_ADDRFAMILY, VX_EAI_NODATA},
#endif
};

std::int32_t lookUpNumber(int error) noexcept
{
    if (error == 0)
        return 0;
    if (error == EAI_SYSTEM)
        return VXNativeSocketError(errno != 0 ? errno : EINVAL);
    for (const NumberRow& row : LOOK_UP_NUMBERS) {
        if (row.native == error)
            return row.number;
    }
    return VX_EAI_FAIL;
}

bool isLocalhost(const char* host, const addrinfo* hints) noexcept
{
    const bool isNumber = hints != nullptr && (hints->ai_flags & AI_NUMERICHOST) != 0;
    return host != nullptr && !isNumber && ::strcasecmp(host, "localhost") == 0;
}

/// The addresses of the loopback interface, as RFC 6761 (6.3) wants them for "localhost": a small system may have no
/// file of hosts that names them.
int loopback(const char* service, const addrinfo* hints, addrinfo** result) noexcept
{
    addrinfo wanted = hints != nullptr ? *hints : addrinfo {};
    wanted.ai_flags &= ~(AI_PASSIVE | AI_CANONNAME);
    return ::getaddrinfo(nullptr, service != nullptr ? service : "0", &wanted, result);
}

} // namespace

std::int32_t VXNativeSocketError(int error) noexcept
{
    if (error == 0)
        return 0;
    for (const NumberRow& row : SOCKET_NUMBERS) {
        if (row.native == error)
            return row.number;
    }
    return SYSTEM_CALL_FAILURE;
}

std::int32_t VXgetaddrinfo(const char* host, const char* service, const addrinfo* hints, addrinfo** result) noexcept
{
    if (result == nullptr)
        return VXNativeSocketError(EINVAL);
    *result = nullptr;
    int error = ::getaddrinfo(host, service, hints, result);
    if ((error == EAI_NONAME || error == EAI_AGAIN) && isLocalhost(host, hints))
        error = loopback(service, hints, result);
    if (error != 0)
        *result = nullptr;
    return lookUpNumber(error);
}

void VXfreeaddrinfo(addrinfo* result) noexcept
{
    if (result != nullptr)
        ::freeaddrinfo(result);
}

std::int32_t VXgetnumericname(const sockaddr* address, std::uint32_t length, char* host, std::uint32_t size) noexcept
{
    return lookUpNumber(::getnameinfo(address, length, host, size, nullptr, 0, NI_NUMERICHOST | NI_NUMERICSERV));
}

std::uint16_t VXGetTcpServicePort(const char* service) noexcept
{
    if (service == nullptr || *service == '\0')
        return 0;
    servent entry;
    servent* found = nullptr;
    char texts[4096];
    if (::getservbyname_r(service, "tcp", &entry, texts, sizeof texts, &found) != 0 || found == nullptr)
        return 0;
    return ntohs(static_cast<std::uint16_t>(found->s_port));
}

std::int32_t VXGetHostName(char* name, std::int32_t size) noexcept
{
    if (name == nullptr || size < 1)
        return RESULT_INVALID_ARGUMENT;
    *name = '\0';
    char full[HOST_NAME_MAX + 1];
    if (::gethostname(full, sizeof full) != 0)
        return VXResultFromNative(errno);
    full[HOST_NAME_MAX] = '\0';
    const std::size_t length = std::strlen(full);
    if (length >= static_cast<std::size_t>(size))
        return RESULT_BUFFER_TOO_SMALL;
    std::memcpy(name, full, length + 1);
    return RESULT_OK;
}
