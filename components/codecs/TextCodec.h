#pragma once

#include "Codec.h"
#include "ReverseTable.h"

#include <vx/Result.h>
#include <vx/text/charset/IVXTextCodec.h>
#include <vxsys/Surrogate.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace vx::components {

/// Base of the codecs that convert many characters in a call.
class TextCodec : public Codec, public IVXTextCodec {
public:
    VX_OBJECT_UNKNOWN(Object)
    static const vorb::InterfaceData* GetComIntfMap();

    // IVXTextCodec
    std::int32_t Decode(const signed char* bytes, std::int32_t* length, char16_t* units, std::int32_t* count) override;
    std::int32_t Encode(const char16_t* units, std::int32_t* length, signed char* bytes, std::int32_t* count) override;
    /// Stores nothing: most encodings have no state.
    std::int32_t EndText(signed char* bytes, std::int32_t* count) override;
    std::int32_t Reset() override;

protected:
    using Codec::Codec;

    /// What a conversion reads and writes. It moves `in` and `out` over whole characters.
    template <class In, class Out>
    struct Pass {
        const In* in;
        const In* inEnd;
        Out* out;
        Out* outEnd;

        std::ptrdiff_t left() const noexcept { return inEnd - in; }
        std::ptrdiff_t room() const noexcept { return outEnd - out; }
    };
    using Decoding = Pass<unsigned char, char16_t>;
    using Encoding = Pass<char16_t, unsigned char>;

    /// Copies ASCII, many characters at a time.
    template <class In, class Out>
    static void copyAsciiBlocks(Pass<In, Out>& pass) noexcept
    {
        constexpr int BLOCK = 16;
        while (pass.left() >= BLOCK && pass.room() >= BLOCK) {
            unsigned all = 0;
            for (int index = 0; index < BLOCK; ++index)
                all |= pass.in[index];
            if (all >= 0x80)
                break;
            std::copy_n(pass.in, BLOCK, pass.out);
            pass.in += BLOCK;
            pass.out += BLOCK;
        }
    }

    /// Copies ASCII as far as it goes, and there is room.
    template <class In, class Out>
    static void copyAscii(Pass<In, Out>& pass) noexcept
    {
        copyAsciiBlocks(pass);
        while (pass.in < pass.inEnd && *pass.in < 0x80 && pass.out < pass.outEnd)
            *pass.out++ = static_cast<Out>(*pass.in++);
    }

    /// Stores a code point as one unit, or as a pair. Returns false if there is no room, or if it is none.
    static bool storeUnits(std::uint32_t codePoint, Decoding& pass) noexcept
    {
        if (codePoint < vxsys::FIRST_BEYOND_BASIC_PLANE) {
            if (pass.out == pass.outEnd)
                return false;
            *pass.out++ = static_cast<char16_t>(codePoint);
            return true;
        }
        if (codePoint > vxsys::LAST_CODE_POINT || pass.room() < 2)
            return false;
        *pass.out++ = vxsys::leadOf(codePoint);
        *pass.out++ = vxsys::trailOf(codePoint);
        return true;
    }

    // The results are those of the interface.
    virtual std::int32_t decodeText(Decoding& pass) = 0;
    virtual std::int32_t encodeText(Encoding& pass) = 0;
};

/// What a charset says about the first bytes of a text.
struct Decoded {
    static constexpr std::uint32_t UNMAPPED = 0xFFFFFFFF;

    std::uint32_t codePoint;
    int length; ///< 0: more bytes are needed
};

/// An encoding that contains ASCII. For all else it asks a `Charset`, which has
/// - `Decoded decode(const unsigned char* bytes, std::ptrdiff_t length)`,
/// - `int encode(std::uint32_t codePoint, unsigned char* bytes)`, the number of bytes, at most `MOST_BYTES`, or 0,
/// - `const ReverseTable& codes()`, all codes of one or two bytes, with those of ASCII.
template <class Charset>
class CharsetCodec final : public TextCodec {
public:
    explicit CharsetCodec(const CodePage& codePage)
        : TextCodec(codePage)
        , m_charset(codePage)
    {
    }

private:
    std::int32_t decodeText(Decoding& pass) override
    {
        while (pass.in < pass.inEnd) {
            if (*pass.in < 0x80) {
                copyAscii(pass);
                if (pass.out == pass.outEnd && pass.in < pass.inEnd && *pass.in < 0x80)
                    return RESULT_BUFFER_TOO_SMALL;
                continue;
            }
            const Decoded next = m_charset.decode(pass.in, pass.left());
            if (next.length == 0)
                break;
            if (!storeUnits(next.codePoint, pass))
                return next.codePoint == Decoded::UNMAPPED ? RESULT_UNMAPPABLE_CHARACTER : RESULT_BUFFER_TOO_SMALL;
            pass.in += next.length;
        }
        return RESULT_OK;
    }

    /// Encodes up to a character that has no code of one or two bytes, or near an end. No branch depends on the length of
    /// a code.
    void encodeCodes(Encoding& pass) const noexcept
    {
        constexpr std::ptrdiff_t STRETCH = 32; // then longer ASCII is looked for
        const char16_t* in = pass.in;
        const char16_t* const end = in + std::min({STRETCH, pass.left(), pass.room() / 2});
        unsigned char* out = pass.out;
        for (; in < end; ++in) {
            const unsigned code = m_charset.codes().find(*in);
            if (code == 0)
                break;
            const unsigned isPair = (0xFF - code) >> 31; // compilers make a branch of a comparison
            out[0] = static_cast<unsigned char>(code >> 8 * isPair);
            out[1] = static_cast<unsigned char>(code);
            out += 1 + isPair;
        }
        pass.in = in;
        pass.out = out;
    }

    std::int32_t encodeText(Encoding& pass) override
    {
        while (pass.in < pass.inEnd) {
            copyAsciiBlocks(pass);
            encodeCodes(pass);
            if (pass.in == pass.inEnd)
                break;
            std::uint32_t codePoint = *pass.in;
            if (codePoint < 0x80) {
                copyAscii(pass);
                if (pass.out == pass.outEnd && pass.in < pass.inEnd && *pass.in < 0x80)
                    return RESULT_BUFFER_TOO_SMALL;
                continue;
            }
            int units = 1;
            if (vxsys::isSurrogate(*pass.in)) {
                if (vxsys::isTrail(*pass.in))
                    return RESULT_UNMAPPABLE_CHARACTER;
                if (pass.left() < 2)
                    break;
                if (!vxsys::isTrail(pass.in[1]))
                    return RESULT_UNMAPPABLE_CHARACTER;
                codePoint = vxsys::codePoint(pass.in[0], pass.in[1]);
                units = 2;
            }
            int count;
            if (pass.room() >= Charset::MOST_BYTES) {
                count = m_charset.encode(codePoint, pass.out);
            } else {
                unsigned char bytes[Charset::MOST_BYTES];
                count = m_charset.encode(codePoint, bytes);
                if (count > pass.room())
                    return RESULT_BUFFER_TOO_SMALL;
                std::copy_n(bytes, count, pass.out);
            }
            if (count == 0)
                return RESULT_UNMAPPABLE_CHARACTER;
            pass.out += count;
            pass.in += units;
        }
        return RESULT_OK;
    }

    int decode(const signed char* bytes, int length, std::uint32_t& codePoint) override
    {
        if (*bytes >= 0) {
            codePoint = static_cast<std::uint32_t>(*bytes);
            return 1;
        }
        const Decoded first = m_charset.decode(reinterpret_cast<const unsigned char*>(bytes), length);
        if (first.length > 0 && first.codePoint != Decoded::UNMAPPED)
            codePoint = first.codePoint;
        return first.length;
    }

    int encode(std::uint32_t codePoint, char* bytes) override
    {
        if (codePoint < 0x80) {
            *bytes = static_cast<char>(codePoint);
            return 1;
        }
        return m_charset.encode(codePoint, reinterpret_cast<unsigned char*>(bytes));
    }

    const Charset m_charset;
};

} // namespace vx::components
