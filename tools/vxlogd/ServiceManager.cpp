#include "ServiceManager.h"

#include "Complaint.h"
#include "common/Failure.h"

#include <cerrno>
#include <chrono>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <string_view>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace vxlogd {

void tellManager(const std::string& state)
{
    const char* const place = std::getenv("NOTIFY_SOCKET");
    if (place == nullptr || *place == '\0')
        return;
    const std::string_view path(place);
    sockaddr_un address {};
    address.sun_family = AF_UNIX;
    int error = path.size() < sizeof address.sun_path ? 0 : ENAMETOOLONG;
    if (error == 0) {
        std::memcpy(address.sun_path, path.data(), path.size());
        if (path.starts_with('@'))
            address.sun_path[0] = '\0'; // the name is abstract, without a file
        const auto length = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + path.size());
        const int socket = ::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
        const bool isSent = socket != -1
            && ::sendto(socket, state.data(), state.size(), MSG_NOSIGNAL, reinterpret_cast<const sockaddr*>(&address),
                   length)
                >= 0;
        error = isSent ? 0 : errno;
        if (socket != -1)
            ::close(socket);
    }
    if (error != 0)
        complain("the service manager at " + std::string(path) + ": " + vxtools::textOfError(error));
}

void tellManagerOfReload()
{
    using namespace std::chrono;
    // The clock of the library has its origin in CLOCK_MONOTONIC, as the manager expects.
    const auto now = duration_cast<microseconds>(steady_clock::now().time_since_epoch());
    tellManager("RELOADING=1\nMONOTONIC_USEC=" + std::to_string(now.count()));
}

} // namespace vxlogd
