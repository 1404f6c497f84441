#pragma once

#include "vx/io/FilterOutputStream.h"
#include "vx/util/AbstractCharBuffer.h"

#include <cstdint>

namespace vx::io {

/// Numbers in big-endian order, one write to the wrapped stream for each of up to four bytes.
class VX_API DataOutputStream : public FilterOutputStream {
public:
    explicit DataOutputStream(OutputStream* sink);

    /// One byte, 1 or 0.
    virtual void writeBool(bool value);
    virtual void writeByte(signed char value);
    virtual void writeChar16(char16_t value);
    virtual void writeChar32(std::uint32_t value);
    virtual void writeInt16(short value);
    virtual void writeInt32(std::int32_t value);
    virtual void writeInt64(std::int64_t value);
    virtual void writeFloat(float value);
    virtual void writeDouble(double value);
    /// Strings have no binary form: writes nothing.
    virtual void writeString(const util::AbstractCharBuffer& text);

    /// Other names, each of which calls the operation for its size.
    void writeUnsignedByte(unsigned char value) { writeByte(static_cast<signed char>(value)); }
    void writeChar(char16_t value) { writeInt16(static_cast<short>(value)); }
    void writeShort(short value) { writeInt16(value); }
    void writeUnsignedInt16(unsigned short value) { writeInt16(static_cast<short>(value)); }
    void writeUnsignedShort(unsigned short value) { writeUnsignedInt16(value); }
    void writeInt(int value) { writeInt32(value); }
    void writeLong(std::int32_t value) { writeInt32(value); }
    void writeUnsignedInt(unsigned int value) { writeInt32(static_cast<std::int32_t>(value)); }
    void writeUnsignedInt32(std::uint32_t value) { writeInt32(static_cast<std::int32_t>(value)); }
    void writeUnsignedLong(std::uint32_t value) { writeUnsignedInt32(value); }
    void writeUnsignedInt64(std::uint64_t value) { writeInt64(static_cast<std::int64_t>(value)); }

private:
    static signed char* placeIn(OutputStream& sink, std::int32_t count);
    template <class Number>
    void writeBytes(Number value);
};

} // namespace vx::io
