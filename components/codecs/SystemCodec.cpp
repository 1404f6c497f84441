#include "TextCodec.h"

#include <vx/Exception.h>

#include <algorithm>
#include <bit>
#include <cerrno>
#include <iconv.h>
#include <optional>

namespace vx::components {

namespace {

/// A conversion of the system, which is reset after each call.
class Conversion {
public:
    Conversion(const char* to, const char* from)
        : m_handle(::iconv_open(to, from))
    {
        if (m_handle == reinterpret_cast<iconv_t>(-1))
            throw Exception(String(u"The system has no conversion for ").append(String(from)));
    }
    ~Conversion() { ::iconv_close(m_handle); }
    Conversion(const Conversion&) = delete;
    Conversion& operator=(const Conversion&) = delete;

    struct Outcome {
        int taken;
        int given;
        bool needsMore; ///< the input ends inside a character
        bool needsRoom;
        bool isInvalid;
    };
    Outcome run(const char* source, int length, char* target, int room) noexcept
    {
        char* in = const_cast<char*>(source);
        auto inLeft = static_cast<std::size_t>(length);
        auto outLeft = static_cast<std::size_t>(room);
        const bool failed = ::iconv(m_handle, &in, &inLeft, &target, &outLeft) == static_cast<std::size_t>(-1);
        const int error = failed ? errno : 0;
        ::iconv(
            m_handle, nullptr, nullptr, &target, &outLeft); // some keep a letter until they know that no mark follows
        return {length - static_cast<int>(inLeft), room - static_cast<int>(outLeft), error == EINVAL, error == E2BIG,
            error == EILSEQ};
    }

private:
    iconv_t m_handle;
};

/// Converts one character at a time by the system.
template <class Base>
class OneByOne : public Base {
protected:
    /// `mostBytes`: of a character in the input.
    OneByOne(const CodePage& codePage, int mostBytes)
        : Base(codePage)
        , m_decoding("UTF-32BE", codePage.systemName)
        , m_encoding(codePage.systemName, "UTF-32BE")
        , m_mostBytes(mostBytes)
    {
    }

    int decode(const signed char* bytes, int length, std::uint32_t& codePoint) final
    {
        const auto* const source = reinterpret_cast<const char*>(bytes);
        const int most = std::min(length, m_mostBytes);
        for (int count = 1; count <= most; ++count) {
            unsigned char unit[4];
            const Conversion::Outcome outcome = m_decoding.run(source, count, reinterpret_cast<char*>(unit), 4);
            if (outcome.given == 4) {
                codePoint = static_cast<std::uint32_t>(unit[0]) << 24 | unit[1] << 16 | unit[2] << 8 | unit[3];
                return count;
            }
            if (!outcome.needsMore) // ASCII after an invalid first byte is a separate character
                return count > 1 && bytes[count - 1] >= 0 ? count - 1 : count;
        }
        return length < m_mostBytes ? 0 : most;
    }

    int encode(std::uint32_t codePoint, char* bytes) final
    {
        const unsigned char unit[]
            = {static_cast<unsigned char>(codePoint >> 24), static_cast<unsigned char>(codePoint >> 16),
                static_cast<unsigned char>(codePoint >> 8), static_cast<unsigned char>(codePoint)};
        const Conversion::Outcome outcome
            = m_encoding.run(reinterpret_cast<const char*>(unit), sizeof unit, bytes, Base::MOST_BYTES);
        return outcome.taken == sizeof unit ? outcome.given : 0;
    }

private:
    Conversion m_decoding;
    Conversion m_encoding;
    const int m_mostBytes;
};

/// An encoding that composes letters with the marks after them: only one character at a time keeps them apart.
class ComposingCodec final : public OneByOne<Codec> {
public:
    explicit ComposingCodec(const CodePage& codePage)
        : OneByOne(codePage, 1)
    {
    }
};

class SystemCodec final : public OneByOne<TextCodec> {
public:
    explicit SystemCodec(const CodePage& codePage)
        : OneByOne(codePage, codePage.maxBytesPerChar)
    {
    }

private:
    static constexpr const char* UNITS = std::endian::native == std::endian::little ? "UTF-16LE" : "UTF-16BE";
    static constexpr std::ptrdiff_t BLOCK = 1 << 20; ///< so that the sizes in bytes fit

    std::int32_t decodeText(Decoding& pass) override
    {
        if (!m_decoding)
            m_decoding.emplace(UNITS, page().systemName);
        while (pass.in < pass.inEnd) {
            const auto length = static_cast<int>(std::min(pass.left(), BLOCK));
            const Conversion::Outcome outcome = m_decoding->run(reinterpret_cast<const char*>(pass.in), length,
                reinterpret_cast<char*>(pass.out), static_cast<int>(2 * std::min(pass.room(), BLOCK)));
            pass.in += outcome.taken;
            pass.out += outcome.given / 2;
            // One version of the system's CP949 has passed over this pair when it says that it is invalid.
            if (outcome.isInvalid && outcome.taken >= 2 && pass.in[-2] == 0xA2 && pass.in[-1] == 0xE8
                && page().number == 949) {
                pass.in -= 2;
                return RESULT_UNMAPPABLE_CHARACTER;
            }
            if (outcome.taken == length || (outcome.taken > 0 && (outcome.needsMore || outcome.needsRoom)))
                continue;
            if (outcome.needsRoom) {
                std::uint32_t next = Decoded::UNMAPPED;
                const int taken = decode(reinterpret_cast<const signed char*>(pass.in), length, next);
                return taken > 0 && next == Decoded::UNMAPPED ? RESULT_UNMAPPABLE_CHARACTER : RESULT_BUFFER_TOO_SMALL;
            }
            return outcome.needsMore && length < page().maxBytesPerChar ? RESULT_OK : RESULT_UNMAPPABLE_CHARACTER;
        }
        return RESULT_OK;
    }

    std::int32_t encodeText(Encoding& pass) override
    {
        if (!m_encoding)
            m_encoding.emplace(page().systemName, UNITS);
        while (pass.in < pass.inEnd) {
            // The system's converter drops the tags from U+E0000 on, and does not say so.
            constexpr char16_t LEAD_OF_TAGS = 0xDB40;
            const auto* const end = std::find(pass.in, pass.in + std::min(pass.left(), BLOCK), LEAD_OF_TAGS);
            const auto length = static_cast<int>(2 * (end - pass.in));
            if (length == 0)
                return pass.left() == 1 ? RESULT_OK : RESULT_UNMAPPABLE_CHARACTER;
            const Conversion::Outcome outcome = m_encoding->run(reinterpret_cast<const char*>(pass.in), length,
                reinterpret_cast<char*>(pass.out), static_cast<int>(std::min(pass.room(), BLOCK)));
            pass.in += outcome.taken / 2;
            pass.out += outcome.given;
            if (outcome.taken == length || (outcome.taken > 0 && (outcome.needsMore || outcome.needsRoom)))
                continue;
            if (outcome.needsRoom) {
                char bytes[MOST_BYTES];
                const bool isMapped = encode(*pass.in, bytes) > 0;
                return isMapped ? RESULT_BUFFER_TOO_SMALL : RESULT_UNMAPPABLE_CHARACTER;
            }
            return outcome.needsMore && pass.left() == 1 ? RESULT_OK : RESULT_UNMAPPABLE_CHARACTER;
        }
        return RESULT_OK;
    }

    // One codec converts in one direction only.
    std::optional<Conversion> m_decoding;
    std::optional<Conversion> m_encoding;
};

} // namespace

Codec* makeSystemCodec(const CodePage& page)
{
    return new SystemCodec(page);
}

Codec* makeComposingCodec(const CodePage& page)
{
    return new ComposingCodec(page);
}

} // namespace vx::components
