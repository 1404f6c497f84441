#include "vx/io/Writer.h"

#include "vx/String.h"
#include "vx/util/BufferLocks.h"
#include "vxsys/Text.h"

namespace vx::io {

void Writer::write(const String& text)
{
    const util::CharReadLock lock(text);
    write(lock.data(), lock.length());
}

void Writer::write(const char16_t* text)
{
    write(text, VXStrLenW(text));
}

void Writer::write(char16_t ch)
{
    write(&ch, 1);
}

void Writer::flush() { }

void Writer::close() { }

} // namespace vx::io
