#include "vx/io/Reader.h"

#include "vx/io/IoException.h"
#include "vx/io/detail/ReadDefaults.h"

namespace vx::io {

int Reader::read()
{
    return detail::readUnit<char16_t>(*this);
}

std::int32_t Reader::skip(std::int32_t count)
{
    return detail::skipByReading<char16_t>(*this, count);
}

std::int32_t Reader::available()
{
    return 0;
}

void Reader::close() { }

bool Reader::markSupported()
{
    return false;
}

void Reader::mark(std::int32_t) { }

void Reader::reset()
{
    throw IoException(u"mark/reset not supported");
}

} // namespace vx::io
