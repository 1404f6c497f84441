#pragma once

#include "vx/util/IByteBuffer.h"
#include "vx/util/ICharBuffer.h"

/// An encoding from a component, one character at a time. A codec keeps nothing between characters. One thread at a
/// time.
class VX_API IVXCharCodec : public IVXUnknown {
public:
    using InterfaceType = IVXCharCodec;
    static constexpr _GUID IID {0xE9DE4D9A, 0xBF89, 0x4A97, {0xB9, 0x74, 0x1F, 0x50, 0xBC, 0x5A, 0x8C, 0x61}};

    /// Writes the name of the encoding into the buffer.
    virtual std::int32_t GetName(IVXCharBuffer* name) = 0;
    /// The length of the longest sequence for one character.
    virtual std::int32_t GetMaxBytesPerChar(std::int32_t* value) = 0;
    virtual std::int32_t GetMaxCharsPerByte(std::int32_t* value) = 0;
    /// Decodes the first character. `*length` is the number of bytes available, and becomes the length of the
    /// character, or 0 if more bytes are needed. `*codePoint` is U+FFFD for a sequence without a character. The result
    /// code is ignored.
    virtual std::int32_t ConvertBytes(const signed char* bytes, std::int32_t* length, std::uint32_t* codePoint) = 0;
    /// Encodes one character into the buffer. An empty buffer and a negative result both mean that there is no mapping.
    virtual std::int32_t ConvertChar(std::uint32_t codePoint, IVXByteBuffer* bytes) = 0;

protected:
    ~IVXCharCodec() = default;
};
