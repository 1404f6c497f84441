#include "common/Input.h"

#include "common/Failure.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace vxtools {

Input::Input(const std::string& path)
    : m_name(path == "-" ? STANDARD_INPUT() : Text(path))
{
    if (path != "-") {
        m_descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
        if (m_descriptor < 0)
            throw Failure(m_name, textOfError(errno));
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

void occupyStandardStreams()
{
    for (int descriptor = 0; descriptor <= 2; ++descriptor) {
        // The lowest free number is this one. Opened the other way round, it fails as a closed one does.
        if (::fcntl(descriptor, F_GETFD) == -1)
            static_cast<void>(::open("/dev/null", descriptor == 0 ? O_WRONLY : O_RDONLY));
    }
}

} // namespace vxtools
