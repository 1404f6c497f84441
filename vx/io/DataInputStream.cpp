#include "vx/io/DataInputStream.h"

#include "vx/ByteOrder.h"
#include "vx/detail/StringLocks.h"
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

template <class Number>
Number DataInputStream::readBytes()
{
    InputStream& in = source();
    if (vx::detail::isExactly<BufferedInputStream>(in)) { // its reads have no effect but their results
        using Input = detail::BufferedInput<BufferedInputStream>;
        auto& stream = static_cast<BufferedInputStream&>(in);
        const auto bytes = Input::buffered(stream);
        if (bytes.size() >= sizeof(Number)) [[likely]] {
            Input::skipBuffered(stream, sizeof(Number));
            return vx::detail::loadNumber<Number, std::endian::big>(bytes.data());
        }
    }
    std::uint32_t value = 0;
    int any = 0; // negative if one of them was
    for (std::size_t index = 0; index < sizeof(Number); ++index) {
        const int byte = in.read();
        any |= byte;
        value = value << 8 | (static_cast<std::uint32_t>(byte) & 0xFF);
    }
    if (any < 0)
        throw UnexpectedEOFException();
    return static_cast<Number>(value);
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
    return readBytes<std::uint8_t>() != 0;
}

signed char DataInputStream::readByte()
{
    return static_cast<signed char>(readBytes<std::uint8_t>());
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
    return static_cast<short>(readBytes<std::uint16_t>());
}

std::int32_t DataInputStream::readInt32()
{
    return static_cast<std::int32_t>(readBytes<std::uint32_t>());
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
