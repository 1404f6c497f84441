#include "vx/io/DataOutputStream.h"

#include "vx/ByteOrder.h"

#include <bit>

namespace vx::io {

DataOutputStream::DataOutputStream(OutputStream* sink)
    : FilterOutputStream(sink)
{
}

template <class Number>
void DataOutputStream::writeBytes(Number value)
{
    signed char bytes[sizeof value];
    vx::detail::storeNumber<std::endian::big>(bytes, value);
    sink().write(bytes, static_cast<std::int32_t>(sizeof bytes));
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
