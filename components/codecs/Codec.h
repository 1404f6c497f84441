#pragma once

#include "CodePages.h"

#include <vx/Object.h>
#include <vx/text/charset/IVXCharCodec.h>

namespace vx::components {

/// Base of the codecs: describes a codec by the row of its code page.
class Codec : public Object, public IVXCharCodec {
public:
    VX_OBJECT_UNKNOWN(Object)
    static const vorb::InterfaceData* GetComIntfMap();

    // IVXCharCodec
    std::int32_t GetName(IVXCharBuffer* name) override;
    std::int32_t GetMaxBytesPerChar(std::int32_t* value) override;
    std::int32_t GetMaxCharsPerByte(std::int32_t* value) override;
    std::int32_t ConvertBytes(const signed char* bytes, std::int32_t* length, std::uint32_t* codePoint) override;
    std::int32_t ConvertChar(std::uint32_t codePoint, IVXByteBuffer* bytes) override;

protected:
    /// Of one character, with what must precede it.
    static constexpr int MOST_BYTES = 8;

    explicit Codec(const CodePage& page) noexcept
        : m_page(page)
    {
    }
    const CodePage& page() const noexcept { return m_page; }

private:
    /// Returns the bytes of the first character or unmapped sequence, 0 if it needs more than `length`. `codePoint` is
    /// U+FFFD before the call.
    virtual int decode(const signed char* bytes, int length, std::uint32_t& codePoint) = 0;
    /// Returns the number of bytes written, at most MOST_BYTES, or 0 for a character without a mapping.
    virtual int encode(std::uint32_t codePoint, char* bytes) = 0;

    const CodePage& m_page;
};

} // namespace vx::components
