#pragma once

#include "vxsys/Api.h"

#include <cstdint>

struct addrinfo;
struct sockaddr;

/// Names of hosts and services, and the numbers of what fails: Windows Sockets numbers for errors of sockets, numbers of
/// this layer's own for errors of a look-up.
extern "C" {

inline constexpr std::int32_t VX_EAI_MEMORY = 2008;
inline constexpr std::int32_t VX_EAI_BADFLAGS = 12022;
inline constexpr std::int32_t VX_EAI_SOCKTYPE = 12044;
inline constexpr std::int32_t VX_EAI_FAMILY = 12047;
inline constexpr std::int32_t VX_EAI_SERVICE = 12109;
inline constexpr std::int32_t VX_EAI_NONAME = 13001;
inline constexpr std::int32_t VX_EAI_AGAIN = 13002;
inline constexpr std::int32_t VX_EAI_FAIL = 13003;
inline constexpr std::int32_t VX_EAI_NODATA = 14001;

/// The number that an error of the system's socket calls (`errno`) has in Windows Sockets; 0 for 0, 10107 (a system call
/// has failed) for one that has no equivalent.
VXSYS_API std::int32_t VXNativeSocketError(int error) noexcept;

/// As the sockets interface has it. 0, or the number of a look-up or socket error, and then `*result` is null.
VXSYS_API std::int32_t VXgetaddrinfo(
    const char* host, const char* service, const addrinfo* hints, addrinfo** result) noexcept;
/// Null is allowed.
VXSYS_API void VXfreeaddrinfo(addrinfo* result) noexcept;

/// The numeric text of an address of `length` bytes, zero-terminated, without a look-up. 0 or the number of an error.
VXSYS_API std::int32_t VXgetnumericname(
    const sockaddr* address, std::uint32_t length, char* host, std::uint32_t size) noexcept;

/// The port of a TCP service in host byte order, 0 for an unknown service.
VXSYS_API std::uint16_t VXGetTcpServicePort(const char* service) noexcept;

/// This host's name, zero-terminated. Negative is failure, RESULT_BUFFER_TOO_SMALL for a name that does not fit.
VXSYS_API std::int32_t VXGetHostName(char* name, std::int32_t size) noexcept;
}
