#pragma once

#include "vxsys/Api.h"

#include <cstdint>

struct addrinfo;
struct sockaddr;

/// Names of hosts and services, and error numbers: those of Windows Sockets for socket errors, and the ones below for
/// errors of a look-up.
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

/// The Windows Sockets number for an error of the system's socket calls (`errno`). 0 for 0, and 10107 ("a system call
/// has failed") for an error without an equivalent.
VXSYS_API std::int32_t VXNativeSocketError(int error) noexcept;

/// As `getaddrinfo`, and "localhost" is always found. Returns 0, or the number of a look-up or socket error with a null
/// `*result`.
VXSYS_API std::int32_t VXgetaddrinfo(
    const char* host, const char* service, const addrinfo* hints, addrinfo** result) noexcept;
/// Null is allowed.
VXSYS_API void VXfreeaddrinfo(addrinfo* result) noexcept;

/// Writes the numeric text of an address of `length` bytes, zero-terminated, without a look-up. Returns 0 or the number
/// of an error.
VXSYS_API std::int32_t VXgetnumericname(
    const sockaddr* address, std::uint32_t length, char* host, std::uint32_t size) noexcept;

/// The port of a TCP service in host byte order; 0 for an unknown service.
VXSYS_API std::uint16_t VXGetTcpServicePort(const char* service) noexcept;

/// The name of this host, zero-terminated. Negative is failure: RESULT_BUFFER_TOO_SMALL if there is no room.
VXSYS_API std::int32_t VXGetHostName(char* name, std::int32_t size) noexcept;
}
