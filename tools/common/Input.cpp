#include "common/Input.h"

#include "common/Failure.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace vxtools {

namespace {

constexpr Message IS_CLOSED {u"tools.is-closed", "is closed"};

} // namespace

Input::Input(Text name)
    : m_name(std::move(name))
{
}

Input::Input(const std::string& path)
    : Input(path == "-" ? STANDARD_INPUT() : Text(path)) // so that the destructor runs if what follows fails
{
    if (path != "-") {
        m_descriptor = openFile(path.c_str(), O_RDONLY | O_CLOEXEC);
        if (m_descriptor < 0)
            throw Failure(m_name, textOfError(errno));
    } else {
        requireStream(m_descriptor);
    }
    struct stat status;
    if (::fstat(m_descriptor, &status) != 0)
        throw Failure(m_name, textOfError(errno));
    if (S_ISDIR(status.st_mode))
        throw Failure(m_name, textOfError(EISDIR));
    if (S_ISREG(status.st_mode))
        m_size = status.st_size;
}

Input::~Input()
{
    if (m_descriptor > 0)
        ::close(m_descriptor);
}

int openFile(const char* path, int flags, unsigned int mode)
{
    int descriptor = -1;
    do {
        descriptor = ::open(path, flags, mode);
    } while (descriptor < 0 && errno == EINTR);
    return descriptor;
}

void requireStream(int descriptor)
{
    const int flags = ::fcntl(descriptor, F_GETFL);
    if (flags == -1 || (flags & O_ACCMODE) == (descriptor == 0 ? O_WRONLY : O_RDONLY))
        throw Failure(descriptor == 0 ? STANDARD_INPUT() : STANDARD_OUTPUT(), IS_CLOSED());
}

void occupyStandardStreams()
{
    for (int descriptor = 0; descriptor <= 2; ++descriptor) {
        // The lowest free descriptor is the closed stream. It is opened for the wrong direction, so that using it fails
        // as on a closed one, and `requireStream` knows it.
        if (::fcntl(descriptor, F_GETFD) == -1)
            static_cast<void>(::open("/dev/null", descriptor == 0 ? O_WRONLY : O_RDONLY));
    }
}

} // namespace vxtools
