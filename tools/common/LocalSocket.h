#pragma once

#include <string>
#include <sys/un.h>

namespace vxtools {

/// The address of a Unix socket. Throws Failure if the path is too long for one.
sockaddr_un localAddress(const std::string& path);
/// A new Unix socket for streams. Throws Failure that names the path.
int openLocalSocket(const std::string& path);
/// The error number; 0 for success.
int connectLocalSocket(int socket, const std::string& path);

} // namespace vxtools
