#include "vx/io/detail/StreamChecks.h"

#include "vx/io/IoException.h"

namespace vx::io::detail {

void throwStreamClosed()
{
    throwIo(u"stream closed");
}

void throwIo(const char16_t* message)
{
    throw IoException(message);
}

} // namespace vx::io::detail
