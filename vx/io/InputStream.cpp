#include "vx/io/InputStream.h"

#include "vx/io/IoException.h"
#include "vx/io/detail/ReadDefaults.h"

namespace vx::io {

std::int32_t InputStream::read(unsigned char* target, std::int32_t length)
{
    return read(reinterpret_cast<signed char*>(target), length);
}

std::int32_t InputStream::read(char* target, std::int32_t length)
{
    return read(reinterpret_cast<signed char*>(target), length);
}

int InputStream::read()
{
    return detail::readUnit<signed char>(*this);
}

std::int32_t InputStream::skip(std::int32_t count)
{
    return detail::skipByReading<signed char>(*this, count);
}

std::int32_t InputStream::available()
{
    return 0;
}

void InputStream::close() { }

bool InputStream::markSupported()
{
    return false;
}

void InputStream::mark(std::int32_t) { }

void InputStream::reset()
{
    throw IoException(u"mark/reset not supported");
}

} // namespace vx::io
