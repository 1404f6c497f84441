#include "DescriptorOutput.h"

#include <vx/Exception.h>
#include <vx/Result.h>

#include <cerrno>
#include <unistd.h>

namespace vxconv {

void DescriptorOutput::write(const signed char* bytes, std::int32_t length)
{
    while (length > 0) {
        const ssize_t written = ::write(m_descriptor, bytes, static_cast<std::size_t>(length));
        if (written < 0 && errno != EINTR)
            vx::throwResult(VXResultFromNative(errno));
        if (written > 0) {
            bytes += written;
            length -= static_cast<std::int32_t>(written);
        }
    }
}

void DescriptorOutput::flush()
{
    if (::fdatasync(m_descriptor) != 0 && errno != EINVAL && errno != EROFS)
        vx::throwResult(VXResultFromNative(errno));
}

} // namespace vxconv
