#include "vx/io/DataInputStream.h"

#include "vx/detail/ExactType.h"
#include "vx/io/BufferedInputStream.h"
#include "vx/io/IoException.h"
#include "vx/io/detail/BufferedInput.h"
#include "vx/io/detail/StreamChecks.h"

#include <bit>

namespace vx::io {

DataInputStream::DataInputStream(InputStream* source)
    : FilterInputStream(source)
{
}

template <int size>
std::uint32_t DataInputStream::readBytes()
{
    const auto appended
        = [](std::uint32_t value, int byte) { return value << 8 | (static_cast<std::uint32_t>(byte) & 0xFF); };
    InputStream& in = source();
    std::uint32_t value = 0;
    if (vx::detail::isExactly<BufferedInputStream>(in)) { // its reads have no effect but their results
        using Input = detail::BufferedInput<BufferedInputStream>;
        auto& stream = static_cast<BufferedInputStream&>(in);
        const auto bytes = Input::buffered(stream);
        if (bytes.size() >= size) [[likely]] {
            for (std::size_t index = 0; index < size; ++index)
                value = appended(value, bytes[index]);
            Input::skipBuffered(stream, size);
            return value;
        }
    }
    int any = 0; // negative if one of them was
    for (int index = 0; index < size; ++index) {
        const int byte = in.read();
        any |= byte;
        value = appended(value, byte);
    }
    if (any < 0)
        throw UnexpectedEOFException();
    return value;
}

void DataInputStream::readFully(signed char* target, std::int32_t length)
{
    if (length < 1)
        return;
    detail::requireUnits(target);
    InputStream& in = source();
    while (length > 0) {
        const std::int32_t got = detail::checkedCount(in.read(target, length), length);
        if (got < 0)
            throw UnexpectedEOFException();
        target += got;
        length -= got;
    }
}

bool DataInputStream::readBool()
{
    return readBytes<1>() != 0;
}

signed char DataInputStream::readByte()
{
    return static_cast<signed char>(readBytes<1>());
}

char16_t DataInputStream::readChar16()
{
    return static_cast<char16_t>(readInt16());
}

std::uint32_t DataInputStream::readChar32()
{
    return static_cast<std::uint32_t>(readInt32());
}

short DataInputStream::readInt16()
{
    return static_cast<short>(readBytes<2>());
}

std::int32_t DataInputStream::readInt32()
{
    return static_cast<std::int32_t>(readBytes<4>());
}

std::int64_t DataInputStream::readInt64()
{
    const auto high = static_cast<std::uint32_t>(readInt32());
    const auto low = static_cast<std::uint32_t>(readInt32());
    return static_cast<std::int64_t>(std::uint64_t {high} << 32 | low);
}

float DataInputStream::readFloat()
{
    return std::bit_cast<float>(readInt32());
}

double DataInputStream::readDouble()
{
    return std::bit_cast<double>(readInt64());
}

String DataInputStream::readString()
{
    return {};
}

} // namespace vx::io
