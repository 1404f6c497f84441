#include "JisX0208.h"
#include "ReverseTable.h"
#include "StatefulCodec.h"

#include <string_view>

namespace vx::components {

namespace {

constexpr unsigned char ESCAPE = 0x1B;

/// The character sets of RFC 1468. JIS C 6226-1978 is read as JIS X 0208, as that RFC allows.
enum class Set { ASCII, ROMAN, KANJI, UNKNOWN };

constexpr struct {
    std::string_view sequence;
    Set set;
} ESCAPES[] = {
    {"\x1B(B", Set::ASCII},
    {"\x1B(J", Set::ROMAN},
    {"\x1B$B", Set::KANJI}, // those that are written
    {"\x1B$@", Set::KANJI},
};
constexpr int ESCAPE_LENGTH = 3;

constexpr bool isGraphic(unsigned char byte) noexcept
{
    return byte >= 0x21 && byte <= 0x7E;
}

/// Escape and the two shifts of ISO 2022 are no text.
constexpr bool isShift(char16_t unit) noexcept
{
    return unit == ESCAPE || unit == 0x0E || unit == 0x0F;
}

char16_t characterOf(unsigned char row, unsigned char cell) noexcept
{
    const char16_t* const cells = JIS_X_0208[row - 0x21];
    return cells == nullptr ? u'\uFFFD' : cells[cell - 0x21];
}

const ReverseTable& kanjiCodes()
{
    static const ReverseTable table = [] {
        ReverseTable made;
        for (unsigned row = 0x21; row <= 0x7E; ++row) {
            for (unsigned cell = 0x21; cell <= 0x7E; ++cell) {
                const char16_t character
                    = characterOf(static_cast<unsigned char>(row), static_cast<unsigned char>(cell));
                if (character != u'\uFFFD')
                    made.add(character, static_cast<std::uint16_t>(row << 8 | cell));
            }
        }
        return made;
    }();
    return table;
}

class Iso2022Jp final : public StatefulCodec {
public:
    explicit Iso2022Jp(const CodePage& page)
        : StatefulCodec(page)
        , m_kanji(kanjiCodes())
    {
    }

    std::int32_t EndText(signed char* bytes, std::int32_t* count) override
    {
        if (bytes == nullptr || count == nullptr)
            return RESULT_POINTER;
        const int needed = m_set == Set::ASCII ? 0 : ESCAPE_LENGTH;
        const bool fits = *count >= needed;
        *count = fits ? needed : 0;
        if (!fits)
            return RESULT_BUFFER_TOO_SMALL;
        std::copy_n(ESCAPES[0].sequence.data(), needed, bytes);
        m_set = Set::ASCII;
        return RESULT_OK;
    }

    /// Bytes that were written in another set may stay: then the next character begins with an escape sequence.
    std::int32_t Reset() override
    {
        m_set = m_set == Set::ASCII ? Set::ASCII : Set::UNKNOWN;
        return RESULT_OK;
    }

private:
    std::int32_t decodeText(Decoding& pass) override
    {
        for (; pass.in < pass.inEnd;) {
            const unsigned char byte = *pass.in;
            if (byte == ESCAPE) {
                const std::string_view rest(reinterpret_cast<const char*>(pass.in),
                    static_cast<std::size_t>(std::min<std::ptrdiff_t>(pass.left(), ESCAPE_LENGTH)));
                const auto* const found = std::find_if(std::begin(ESCAPES), std::end(ESCAPES),
                    [&](const auto& escape) { return escape.sequence.starts_with(rest); });
                if (found == std::end(ESCAPES))
                    return RESULT_UNMAPPABLE_CHARACTER;
                if (rest.size() < ESCAPE_LENGTH)
                    break;
                m_set = found->set;
                pass.in += ESCAPE_LENGTH;
                continue;
            }
            char16_t character = byte;
            int length = 1;
            if (m_set == Set::KANJI && isGraphic(byte)) {
                if (pass.left() < 2)
                    break;
                if (!isGraphic(pass.in[1]))
                    return RESULT_UNMAPPABLE_CHARACTER;
                character = characterOf(byte, pass.in[1]);
                length = 2;
                if (character == u'\uFFFD')
                    return RESULT_UNMAPPABLE_CHARACTER;
            } else if (byte >= 0x80 || isShift(byte)) {
                return RESULT_UNMAPPABLE_CHARACTER;
            } else if (m_set == Set::ROMAN) {
                character = byte == 0x5C ? u'\u00A5' : byte == 0x7E ? u'\u203E' : byte;
            }
            if (pass.room() < 1)
                return RESULT_BUFFER_TOO_SMALL;
            *pass.out++ = character;
            pass.in += length;
            if (byte == '\n') // each line begins in ASCII
                m_set = Set::ASCII;
        }
        return RESULT_OK;
    }

    int passOver(const unsigned char* bytes, int length, std::uint32_t&) override
    {
        return m_set == Set::KANJI && isGraphic(bytes[0]) && length > 1 && isGraphic(bytes[1]) ? 2 : 1;
    }

    std::int32_t encodeText(Encoding& pass) override
    {
        for (; pass.in < pass.inEnd; ++pass.in) {
            const char16_t unit = *pass.in;
            if (vxsys::isLead(unit) && pass.left() == 1)
                break;
            unsigned code = unit;
            Set set = Set::ASCII;
            if (unit == u'\u00A5' || unit == u'\u203E') {
                code = unit == u'\u00A5' ? 0x5C : 0x7E;
                set = Set::ROMAN;
            } else if (unit >= 0x80) {
                code = m_kanji.find(unit);
                set = Set::KANJI;
            }
            if (set == Set::KANJI ? code == 0 : isShift(unit))
                return RESULT_UNMAPPABLE_CHARACTER;

            if (pass.room() < (set != m_set ? ESCAPE_LENGTH : 0) + (set == Set::KANJI ? 2 : 1))
                return RESULT_BUFFER_TOO_SMALL;
            if (set != m_set)
                pass.out = std::copy_n(ESCAPES[static_cast<int>(set)].sequence.data(), ESCAPE_LENGTH, pass.out);
            m_set = set;
            if (set == Set::KANJI)
                *pass.out++ = static_cast<unsigned char>(code >> 8);
            *pass.out++ = static_cast<unsigned char>(code);
        }
        return RESULT_OK;
    }

    const ReverseTable& m_kanji;
    Set m_set = Set::ASCII;
};

} // namespace

Codec* makeIso2022JpCodec(const CodePage& page)
{
    return new Iso2022Jp(page);
}

} // namespace vx::components
