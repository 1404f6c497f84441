#include "vx/io/IoException.h"
#include "vx/io/StdioInputStream.h"
#include "vx/io/StdioOutputStream.h"
#include "vx/io/detail/StreamChecks.h"
#include "vxsys/File.h"

#include <cerrno>
#include <cstring>
#include <utility>

namespace vx::io {

namespace {

constexpr const char16_t* READ_ERROR = u"stream read error";
constexpr const char16_t* WRITE_ERROR = u"stream write error";

/// Clears the error, so that the next operation can try again.
[[noreturn]] void fail(std::FILE* stream, const char16_t* message)
{
    std::clearerr(stream);
    throw IoException(message);
}

void checkStream(std::FILE* stream, const char16_t* message)
{
    if (std::ferror(stream) != 0)
        fail(stream, message);
}

/// The next byte, or EOF. A signal does not end the wait for it.
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

/// Writes to a stream of the C library, owned or not. `StdioOutputStream` is the same for standard output.
class StdioFileOutputStream : public OutputStream {
public:
    StdioFileOutputStream(std::FILE* stream, bool owned)
        : m_stream(stream)
        , m_owned(owned)
    {
    }
    StdioFileOutputStream(const StdioFileOutputStream&) = delete;
    StdioFileOutputStream& operator=(const StdioFileOutputStream&) = delete;
    ~StdioFileOutputStream() noexcept(false) override { StdioFileOutputStream::close(); }

    // OutputStream
    using OutputStream::write;
    void write(const signed char* bytes, std::int32_t length) override { writeBytes(m_stream, bytes, length); }
    void write(signed char byte) override { writeByte(m_stream, byte); }
    void flush() override { flushStream(m_stream); }

    void close() override
    {
        if (std::exchange(m_owned, false))
            std::fclose(m_stream);
    }

private:
    std::FILE* m_stream;
    bool m_owned;
};

} // namespace

StdioInputStream::StdioInputStream()
    : m_stream(stdin)
{
}

std::int32_t StdioInputStream::read(signed char* target, std::int32_t length)
{
    if (length < 1)
        return 0;
    detail::requireUnits(target);
    auto* text = reinterpret_cast<char*>(target);
    if (length > 1) { // a signal while fgets waits would lose what it has read of the line: it must find a byte
        const int first = readByte(m_stream);
        checkStream(m_stream, READ_ERROR);
        if (first == EOF || std::ungetc(first, m_stream) == EOF)
            return -1;
    }
    const bool isRead = std::fgets(text, length, m_stream) != nullptr;
    checkStream(m_stream, READ_ERROR);
    const std::size_t got = isRead ? std::strlen(text) : 0;
    return got > 0 ? static_cast<std::int32_t>(got) : -1;
}

int StdioInputStream::read()
{
    const int byte = readByte(m_stream);
    checkStream(m_stream, READ_ERROR);
    return byte;
}

std::int32_t StdioInputStream::skip(std::int32_t count)
{
    const long before = std::ftell(m_stream);
    std::fseek(m_stream, count, SEEK_CUR);
    const long after = std::ftell(m_stream);
    checkStream(m_stream, u"stream seek error");
    return before < 0 || after < 0 ? 0 : static_cast<std::int32_t>(after - before);
}

StdioOutputStream::StdioOutputStream()
    : m_stream(stdout)
{
}

void StdioOutputStream::write(const signed char* bytes, std::int32_t length)
{
    writeBytes(m_stream, bytes, length);
}

void StdioOutputStream::write(signed char byte)
{
    writeByte(m_stream, byte);
}

void StdioOutputStream::flush()
{
    flushStream(m_stream);
}

void StdioOutputStream::close() { }

Reference<OutputStream> StdioOutputStream::getStdErrorStream()
{
    return new StdioFileOutputStream(stderr, false);
}

} // namespace vx::io
