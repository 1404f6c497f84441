#include "vx/io/DataOutputStream.h"

#include "vx/ByteOrder.h"
#include "vx/detail/ExactType.h"
#include "vx/io/BufferedOutputStream.h"
#include "vx/io/ByteArrayOutputStream.h"
#include "vx/io/detail/BufferedOutput.h"

#include <bit>

namespace vx::io {

DataOutputStream::DataOutputStream(OutputStream* sink)
    : FilterOutputStream(sink)
{
}

/// The place of the next bytes in a stream that only stores them; null if it has no room, and for any other class.
inline signed char* DataOutputStream::placeIn(OutputStream& sink, std::int32_t count)
{
    if (vx::detail::isExactly<BufferedOutputStream>(sink))
        return detail::BufferedOutput<BufferedOutputStream>::extend(static_cast<BufferedOutputStream&>(sink), count);
    if (vx::detail::isExactly<ByteArrayOutputStream>(sink))
        return static_cast<ByteArrayOutputStream&>(sink).extend(count);
    return nullptr;
}

template <class Number>
inline void DataOutputStream::writeBytes(Number value)
{
    constexpr auto SIZE = static_cast<std::int32_t>(sizeof value);
    OutputStream& out = sink();
    if (signed char* const place = placeIn(out, SIZE)) {
        vx::detail::storeNumber<std::endian::big>(place, value);
        return;
    }
    signed char bytes[SIZE];
    vx::detail::storeNumber<std::endian::big>(bytes, value);
    out.write(bytes, SIZE);
}

void DataOutputStream::writeBool(bool value)
{
    sink().write(static_cast<signed char>(value));
}

void DataOutputStream::writeByte(signed char value)
{
    sink().write(value);
}

void DataOutputStream::writeChar16(char16_t value)
{
    writeInt16(static_cast<short>(value));
}

void DataOutputStream::writeChar32(std::uint32_t value)
{
    writeInt32(static_cast<std::int32_t>(value));
}

void DataOutputStream::writeInt16(short value)
{
    writeBytes(static_cast<std::uint16_t>(value));
}

void DataOutputStream::writeInt32(std::int32_t value)
{
    writeBytes(static_cast<std::uint32_t>(value));
}

void DataOutputStream::writeInt64(std::int64_t value)
{
    writeInt32(static_cast<std::int32_t>(value >> 32));
    writeInt32(static_cast<std::int32_t>(value));
}

void DataOutputStream::writeFloat(float value)
{
    writeInt32(std::bit_cast<std::int32_t>(value));
}

void DataOutputStream::writeDouble(double value)
{
    writeInt64(std::bit_cast<std::int64_t>(value));
}

void DataOutputStream::writeString(const util::AbstractCharBuffer&) { }

} // namespace vx::io
