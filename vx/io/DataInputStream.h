#pragma once

#include "vx/String.h"
#include "vx/io/FilterInputStream.h"

#include <cstdint>

namespace vx::io {

/// Numbers in big-endian order, as DataOutputStream writes them, byte by byte from the wrapped stream. At the end of
/// the data it throws UnexpectedEOFException; the bytes of an incomplete value are lost.
class VX_API DataInputStream : public FilterInputStream {
public:
    explicit DataInputStream(InputStream* source);

    /// Reads until `length` bytes have been read.
    virtual void readFully(signed char* target, std::int32_t length);
    /// Any byte but 0 is true.
    virtual bool readBool();
    virtual signed char readByte();
    virtual char16_t readChar16();
    virtual std::uint32_t readChar32();
    virtual short readInt16();
    virtual std::int32_t readInt32();
    virtual std::int64_t readInt64();
    virtual float readFloat();
    virtual double readDouble();
    /// Strings have no binary form: returns an empty one and reads nothing.
    virtual String readString();

    /// Other names, each of which calls the operation for its size.
    unsigned char readUnsignedByte() { return static_cast<unsigned char>(readByte()); }
    char16_t readChar() { return static_cast<char16_t>(readInt16()); }
    short readShort() { return readInt16(); }
    unsigned short readUnsignedInt16() { return static_cast<unsigned short>(readInt16()); }
    unsigned short readUnsignedShort() { return readUnsignedInt16(); }
    int readInt() { return readInt32(); }
    std::int32_t readLong() { return readInt32(); }
    unsigned int readUnsignedInt() { return static_cast<unsigned int>(readInt32()); }
    std::uint32_t readUnsignedInt32() { return static_cast<std::uint32_t>(readInt32()); }
    std::uint32_t readUnsignedLong() { return readUnsignedInt32(); }
    std::uint64_t readUnsignedInt64() { return static_cast<std::uint64_t>(readInt64()); }

private:
    template <int size>
    std::uint32_t readBytes();
};

} // namespace vx::io
