#include "vx/net/SocketResult.h"

#include "vx/Result.h"
#include "vxsys/Net.h"

#include <cerrno>
#include <cstddef>
#include <iterator>

namespace {

struct ResultRow {
    ENUM_VX_E_SOCKET value;
    const char16_t* text;
};

// In rising order of the numbers. The sentences are those of the published documentation of Windows Sockets; some end in a
// blank.
constexpr ResultRow SOCKET_ERRORS[] = {
    {VX_E_SOCKET_EINTR, u"EINTR A blocking operation was interrupted by a call to WSACancelBlockingCall."},
    {VX_E_SOCKET_EBADF, u"EBADF The file handle supplied is not valid. "},
    {VX_E_SOCKET_EACCES,
        u"EACCES An attempt was made to access a socket in a way forbidden by its access permissions. "},
    {VX_E_SOCKET_EFAULT,
        u"EFAULT The system detected an invalid pointer address in attempting to use a pointer argument in a call. "},
    {VX_E_SOCKET_EINVAL, u"EINVAL An invalid argument was supplied. "},
    {VX_E_SOCKET_EMFILE, u"EMFILE Too many open sockets. "},
    {VX_E_SOCKET_EWOULDBLOCK, u"EWOULDBLOCK A non-blocking socket operation could not be completed immediately. "},
    {VX_E_SOCKET_EINPROGRESS, u"EINPROGRESS A blocking operation is currently executing. "},
    {VX_E_SOCKET_EALREADY,
        u"EALREADY An operation was attempted on a non-blocking socket that already had an operation in progress. "},
    {VX_E_SOCKET_ENOTSOCK, u"ENOTSOCK An operation was attempted on something that is not a socket. "},
    {VX_E_SOCKET_EDESTADDRREQ, u"EDESTADDRREQ A required address was omitted from an operation on a socket. "},
    {VX_E_SOCKET_EMSGSIZE,
        u"EMSGSIZE A message sent on a datagram socket was larger than the internal message buffer or some other "
        u"network limit, or the buffer used to receive a datagram into was smaller than the datagram itself."},
    {VX_E_SOCKET_EPROTOTYPE,
        u"EPROTOTYPE A protocol was specified in the socket function call that does not support the semantics of the "
        u"socket type requested. "},
    {VX_E_SOCKET_ENOPROTOOPT,
        u"ENOPROTOOPT An unknown, invalid, or unsupported option or level was specified in a getsockopt or setsockopt "
        u"call. "},
    {VX_E_SOCKET_EPROTONOSUPPORT,
        u"EPROTONOSUPPORT The requested protocol has not been configured into the system, or no implementation for it "
        u"exists. "},
    {VX_E_SOCKET_ESOCKTNOSUPPORT,
        u"ESOCKTNOSUPPORT The support for the specified socket type does not exist in this address family. "},
    {VX_E_SOCKET_EOPNOTSUPP,
        u"EOPNOTSUPP The attempted operation is not supported for the type of object referenced. "},
    {VX_E_SOCKET_EPFNOSUPPORT,
        u"EPFNOSUPPORT The protocol family has not been configured into the system or no implementation for it "
        u"exists. "},
    {VX_E_SOCKET_EAFNOSUPPORT, u"EAFNOSUPPORT An address incompatible with the requested protocol was used. "},
    {VX_E_SOCKET_EADDRINUSE,
        u"EADDRINUSE Only one usage of each socket address (protocol/network address/port) is normally permitted. "},
    {VX_E_SOCKET_EADDRNOTAVAIL, u"EADDRNOTAVAIL The requested address is not valid in its context. "},
    {VX_E_SOCKET_ENETDOWN, u"ENETDOWN A socket operation encountered a dead network. "},
    {VX_E_SOCKET_ENETUNREACH, u"ENETUNREACH A socket operation was attempted to an unreachable network. "},
    {VX_E_SOCKET_ENETRESET,
        u"ENETRESET The connection has been broken due to keep-alive activity detecting a failure while the operation "
        u"was in progress. "},
    {VX_E_SOCKET_ECONNABORTED,
        u"ECONNABORTED An established connection was aborted by the software in your host machine. "},
    {VX_E_SOCKET_ECONNRESET, u"ECONNRESET An existing connection was forcibly closed by the remote host. "},
    {VX_E_SOCKET_ENOBUFS,
        u"ENOBUFS An operation on a socket could not be performed because the system lacked sufficient buffer space or "
        u"because a queue was full."},
    {VX_E_SOCKET_EISCONN, u"EISCONN A connect request was made on an already connected socket. "},
    {VX_E_SOCKET_ENOTCONN,
        u"ENOTCONN A request to send or receive data was disallowed because the socket is not connected and (when "
        u"sending on a datagram socket using a sendto call) no address was supplied. "},
    {VX_E_SOCKET_ESHUTDOWN,
        u"ESHUTDOWN A request to send or receive data was disallowed because the socket had already been shut down in "
        u"that direction with a previous shutdown call. "},
    {VX_E_SOCKET_ETOOMANYREFS, u"ETOOMANYREFS Too many references to some kernel object. "},
    {VX_E_SOCKET_ETIMEDOUT,
        u"ETIMEDOUT A connection attempt failed because the connected party did not properly respond after a period of "
        u"time, or established connection failed because connected host has failed to respond. "},
    {VX_E_SOCKET_ECONNREFUSED,
        u"ECONNREFUSED No connection could be made because the target machine actively refused it. "},
    {VX_E_SOCKET_ELOOP, u"ELOOP Cannot translate name. "},
    {VX_E_SOCKET_ENAMETOOLONG, u"ENAMETOOLONG Name component or name was too long. "},
    {VX_E_SOCKET_EHOSTDOWN, u"EHOSTDOWN A socket operation failed because the destination host was down. "},
    {VX_E_SOCKET_EHOSTUNREACH, u"EHOSTUNREACH A socket operation was attempted to an unreachable host. "},
    {VX_E_SOCKET_ENOTEMPTY, u"ENOTEMPTY Cannot remove a directory that is not empty. "},
    {VX_E_SOCKET_EPROCLIM,
        u"EPROCLIM A Windows Sockets implementation may have a limit on the number of applications that may use it "
        u"simultaneously. "},
    {VX_E_SOCKET_EUSERS, u"EUSERS Ran out of quota. "},
    {VX_E_SOCKET_EDQUOT, u"EDQUOT Ran out of disk quota. "},
    {VX_E_SOCKET_ESTALE, u"ESTALE File handle reference is no longer available. "},
    {VX_E_SOCKET_EREMOTE, u"EREMOTE Item is not available locally. "},
    {VX_E_SOCKET_SYSNOTREADY,
        u"SYSNOTREADY WSAStartup cannot function at this time because the underlying system it uses to provide network "
        u"services is currently unavailable. "},
    {VX_E_SOCKET_VERNOTSUPPORTED, u"VERNOTSUPPORTED The Windows Sockets version requested is not supported. "},
    {VX_E_SOCKET_NOTINITIALISED,
        u"NOTINITIALISED Either the application has not called WSAStartup, or WSAStartup failed. "},
    {VX_E_SOCKET_EDISCON,
        u"EDISCON Returned by WSARecv or WSARecvFrom to indicate the remote party has initiated a graceful shutdown "
        u"sequence. "},
    {VX_E_SOCKET_ENOMORE, u"ENOMORE No more results can be returned by WSALookupServiceNext. "},
    {VX_E_SOCKET_ECANCELLED,
        u"ECANCELLED A call to WSALookupServiceEnd was made while this call was still processing. The call has been "
        u"canceled. "},
    {VX_E_SOCKET_EINVALIDPROCTABLE, u"EINVALIDPROCTABLE The procedure call table is invalid. "},
    {VX_E_SOCKET_EINVALIDPROVIDER, u"EINVALIDPROVIDER The requested service provider is invalid. "},
    {VX_E_SOCKET_EPROVIDERFAILEDINIT,
        u"EPROVIDERFAILEDINIT The requested service provider could not be loaded or initialized. "},
    {VX_E_SOCKET_SYSCALLFAILURE, u"SYSCALLFAILURE A system call has failed. "},
    {VX_E_SOCKET_SERVICE_NOT_FOUND,
        u"SERVICE_NOT_FOUND No such service is known. The service cannot be found in the specified name space. "},
    {VX_E_SOCKET_TYPE_NOT_FOUND, u"TYPE_NOT_FOUND The specified class was not found. "},
    {VX_E_SOCKET__E_NO_MORE, u"_E_NO_MORE No more results can be returned by WSALookupServiceNext. "},
    {VX_E_SOCKET__E_CANCELLED,
        u"_E_CANCELLED A call to WSALookupServiceEnd was made while this call was still processing. The call has been "
        u"canceled. "},
    {VX_E_SOCKET_EREFUSED, u"EREFUSED A database query failed because it was actively refused. "},
    {VX_E_SOCKET_HOST_NOT_FOUND, u"HOST_NOT_FOUND No such host is known. "},
    {VX_E_SOCKET_TRY_AGAIN,
        u"TRY_AGAIN This is usually a temporary error during hostname resolution and means that the local server did "
        u"not receive a response from an authoritative server."},
    {VX_E_SOCKET_NO_RECOVERY, u"NO_RECOVERY A non-recoverable error occurred during a database lookup. "},
    {VX_E_SOCKET_NO_DATA, u"NO_DATA The requested name is valid, but no data of the requested type was found. "},
};

constexpr ResultRow LOOK_UP_ERRORS[] = {
    {VX_E_SOCKET_EAI_MEMORY, u"EAI_MEMORY Memory allocation failure."},
    {VX_E_SOCKET_EAI_BADFLAGS, u"EAI_BADFLAGS Invalid value for ai_flags field."},
    {VX_E_SOCKET_EAI_SOCKTYPE, u"EAI_SOCKTYPE ai_socktype not supported."},
    {VX_E_SOCKET_EAI_FAMILY, u"EAI_FAMILY ai_family not supported."},
    {VX_E_SOCKET_EAI_SERVICE, u"EAI_SERVICE SERVICE not supported for ai_socktype."},
    {VX_E_SOCKET_EAI_NONAME, u"EAI_NONAME NAME or SERVICE is unknown."},
    {VX_E_SOCKET_EAI_AGAIN, u"EAI_AGAIN Temporary failure in name resolution."},
    {VX_E_SOCKET_EAI_FAIL, u"EAI_FAIL Non-recoverable failure in name resolution."},
    {VX_E_SOCKET_EAI_NODATA, u"EAI_NODATA No address associated with NAME."},
};

constexpr std::size_t STATED_RESULTS = 72; // with success
static_assert(std::size(SOCKET_ERRORS) + std::size(LOOK_UP_ERRORS) + 1 == STATED_RESULTS);

constexpr int FAILURES = -0x741D0000; ///< 0x8BE30000, to which the native number is added
constexpr int LAST_NUMBER = 0xFFFF;

template <std::size_t count>
const ResultRow* find(const ResultRow (&rows)[count], ENUM_VX_E_SOCKET value) noexcept
{
    for (const ResultRow& row : rows) {
        if (row.value == value)
            return &row;
    }
    return nullptr;
}

template <std::size_t count>
const ResultRow* findNative(const ResultRow (&rows)[count], int nativeError) noexcept
{
    if (nativeError < 0 || nativeError > LAST_NUMBER)
        return nullptr;
    return find(rows, static_cast<ENUM_VX_E_SOCKET>(FAILURES + nativeError));
}

} // namespace

std::int32_t VXLastNativeSocketError(void)
{
    return VXNativeSocketError(errno);
}

ENUM_VX_E_SOCKET VX_E_SOCKETFromNativeSocketError(int nativeError)
{
    if (nativeError == 0)
        return VX_E_SOCKET_OK;
    const ResultRow* row = findNative(SOCKET_ERRORS, nativeError);
    return row != nullptr ? row->value : static_cast<ENUM_VX_E_SOCKET>(vx::RESULT_FAIL);
}

ENUM_VX_E_SOCKET VX_E_SOCKETFromNativeEaiSocketError(int nativeError)
{
    const ResultRow* row = findNative(LOOK_UP_ERRORS, nativeError);
    return row != nullptr ? row->value : VX_E_SOCKETFromNativeSocketError(nativeError);
}

const char16_t* VXGetDescriptionFromVX_E_SOCKET(ENUM_VX_E_SOCKET value)
{
    if (value == VX_E_SOCKET_OK)
        return u"OK";
    const ResultRow* row = find(SOCKET_ERRORS, value);
    if (row == nullptr)
        row = find(LOOK_UP_ERRORS, value);
    return row != nullptr ? row->text : u"FAIL";
}
