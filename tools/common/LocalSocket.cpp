#include "LocalSocket.h"

#include "Failure.h"

#include <cerrno>
#include <cstring>
#include <sys/socket.h>

namespace vxtools {

sockaddr_un localAddress(const std::string& path)
{
    sockaddr_un address {};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof address.sun_path)
        throw Failure(
            path, "the path of a socket has at most " + std::to_string(sizeof address.sun_path - 1) + " bytes");
    std::memcpy(address.sun_path, path.data(), path.size());
    return address;
}

int openLocalSocket(const std::string& path)
{
    const int socket = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (socket == -1)
        throw Failure(path, textOfError(errno));
    return socket;
}

int connectLocalSocket(int socket, const std::string& path)
{
    const sockaddr_un address = localAddress(path);
    return ::connect(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0 ? 0 : errno;
}

} // namespace vxtools
