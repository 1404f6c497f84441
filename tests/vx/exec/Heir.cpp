#include "vx/exec/Process.h"
#include "vx/net/TcpSocket.h"

#include <cstdio>
#include <fcntl.h>

using namespace vx;

namespace {

/// A connected socket that the parent passed on.
struct InheritedSocket final : net::TcpSocket {
    explicit InheritedSocket(const String& inheritanceId)
        : TcpSocket(exec::Process::getInheritedDescriptor(inheritanceId))
    {
    }
};

} // namespace

/// Prints which descriptors are open, and writes to the socket that its argument names.
int main(int argumentCount, char** arguments)
{
    constexpr int MOST = 1024;

    const char* separator = "";
    for (int descriptor = 0; descriptor < MOST; ++descriptor) {
        if (::fcntl(descriptor, F_GETFD) == -1)
            continue;
        std::printf("%s%d", separator, descriptor);
        separator = " ";
    }
    std::puts("");
    if (argumentCount > 1) {
        InheritedSocket socket {String(arguments[1])};
        socket.getOutputStream()->write(reinterpret_cast<const signed char*>("inherited"), 9);
    }
    return 0;
}
