#include "vx/io/detail/Stdio.h"

#include "vx/io/IoException.h"
#include "vxsys/File.h"

#include <cerrno>

namespace vx::io::detail {

namespace {

constexpr const char16_t* WRITE_ERROR = u"stream write error";

[[noreturn]] void fail(std::FILE* stream, const char16_t* message)
{
    std::clearerr(stream);
    throw IoException(message);
}

} // namespace

void checkStream(std::FILE* stream, const char16_t* message)
{
    if (std::ferror(stream) != 0)
        fail(stream, message);
}

int readByte(std::FILE* stream)
{
    for (;;) {
        const int byte = std::fgetc(stream);
        if (byte != EOF || std::ferror(stream) == 0 || errno != EINTR)
            return byte;
        std::clearerr(stream);
    }
}

// These do not try again after a signal: the C library discards its buffer when it cannot write it, and a second try
// would hide the loss.
void writeByte(std::FILE* stream, signed char byte)
{
    if (std::fputc(static_cast<unsigned char>(byte), stream) == EOF)
        fail(stream, WRITE_ERROR);
}

void writeBytes(std::FILE* stream, const signed char* bytes, std::int32_t length)
{
    std::int32_t done = 0;
    if (length > 0 && (VXFileWrite(VXFileFromStream(stream), bytes, length, &done) < 0 || done < length))
        fail(stream, WRITE_ERROR);
    checkStream(stream, WRITE_ERROR);
}

void flushStream(std::FILE* stream)
{
    if (std::fflush(stream) == EOF)
        fail(stream, u"stream flush error");
}

} // namespace vx::io::detail
