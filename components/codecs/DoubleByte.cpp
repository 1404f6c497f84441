#include "DoubleByteTable.h"
#include "Gb18030.h"
#include "JisX0208.h"
#include "KsX1001.h"
#include "TextCodec.h"

namespace vx::components {

namespace {

/// Calls `add` with row and cell, from 0, and the character, for each cell of a table.
template <std::size_t rowCount, class Add>
void forEachCell(const char16_t* const (&rows)[rowCount], Add add)
{
    for (unsigned row = 0; row < rowCount; ++row) {
        if (rows[row] == nullptr)
            continue;
        for (unsigned cell = 0; rows[row][cell] != 0; ++cell)
            add(row, cell, rows[row][cell]);
    }
}

const DoubleByteTable& shiftJisTable()
{
    static const DoubleByteTable table = [] {
        DoubleByteTable made;
        made.addFirst(0x81, 0x9F);
        made.addFirst(0xE0, 0xFC);
        forEachCell(JIS_X_0208, [&](unsigned row, unsigned cell, char16_t character) {
            const unsigned first = row / 2 + (row < 62 ? 0x81 : 0xC1);
            const unsigned place = row % 2 * 94 + cell;
            const unsigned second = place + (place < 63 ? 0x40 : 0x41);
            made.add(static_cast<std::uint16_t>(first << 8 | second), character);
        });
        for (unsigned index = 0; index < 63; ++index) // katakana of half width
            made.addCode(static_cast<char16_t>(0xFF61 + index), static_cast<std::uint16_t>(0xA1 + index));
        // The bytes of these two in JIS X 0201 are those of the backslash and of the tilde in ASCII.
        made.addCode(u'\u00A5', 0x5C);
        made.addCode(u'\u203E', 0x7E);
        return made;
    }();
    return table;
}

const DoubleByteTable& eucKrTable()
{
    static const DoubleByteTable table = [] {
        DoubleByteTable made;
        made.addFirst(0xA1, 0xFE);
        forEachCell(KS_X_1001, [&](unsigned row, unsigned cell, char16_t character) {
            made.add(static_cast<std::uint16_t>((0xA1 + row) << 8 | (0xA1 + cell)), character);
        });
        return made;
    }();
    return table;
}

const DoubleByteTable& gb18030Table()
{
    static const DoubleByteTable table = [] {
        DoubleByteTable made;
        forEachCell(GB18030_PAIRS, [&](unsigned row, unsigned cell, char16_t character) {
            made.add(static_cast<std::uint16_t>((0x81 + row) << 8 | (cell + (cell < 63 ? 0x40 : 0x41))), character);
        });
        return made;
    }();
    return table;
}

int store(std::uint16_t code, unsigned char* bytes) noexcept
{
    if (code < 0x100) {
        *bytes = static_cast<unsigned char>(code);
        return code == 0 ? 0 : 1;
    }
    bytes[0] = static_cast<unsigned char>(code >> 8);
    bytes[1] = static_cast<unsigned char>(code);
    return 2;
}

/// If a first byte and the ASCII byte after it have no character together, the ASCII byte is a separate one.
Decoded unmapped(unsigned char second) noexcept
{
    return {Decoded::UNMAPPED, second < 0x80 ? 1 : 2};
}

/// An encoding with one and two bytes for a character.
template <const DoubleByteTable& (*makeTable)()>
class DoubleByte {
public:
    static constexpr int MOST_BYTES = 2;

    explicit DoubleByte(const CodePage&)
        : m_table(makeTable())
    {
    }

    Decoded decode(const unsigned char* bytes, std::ptrdiff_t length) const noexcept
    {
        if (length >= 2) {
            const char16_t character = m_table.characterOf(bytes[0], bytes[1]);
            if (character != DoubleByteTable::NO_CHARACTER)
                return {character, 2};
        }
        if (makeTable == shiftJisTable && bytes[0] >= 0xA1 && bytes[0] <= 0xDF)
            return {0xFF61U + bytes[0] - 0xA1U, 1};
        if (!m_table.isFirst(bytes[0]))
            return {Decoded::UNMAPPED, 1};
        return length < 2 ? Decoded {Decoded::UNMAPPED, 0} : unmapped(bytes[1]);
    }

    int encode(std::uint32_t codePoint, unsigned char* bytes) const noexcept
    {
        return codePoint < 0x10000 ? store(m_table.codeOf(static_cast<char16_t>(codePoint)), bytes) : 0;
    }

    const ReverseTable& codes() const noexcept { return m_table.codes(); }

private:
    const DoubleByteTable& m_table;
};

/// Codes of four bytes are digits of 126, 10, 126 and 10 values.
class Gb18030 {
public:
    static constexpr int MOST_BYTES = 4;

    explicit Gb18030(const CodePage&)
        : m_table(gb18030Table())
    {
    }

    Decoded decode(const unsigned char* bytes, std::ptrdiff_t length) const noexcept
    {
        if (bytes[0] == 0x80 || bytes[0] == 0xFF)
            return {Decoded::UNMAPPED, 1};
        if (length < 2)
            return {Decoded::UNMAPPED, 0};
        const char16_t character = m_table.characterOf(bytes[0], bytes[1]);
        if (character != DoubleByteTable::NO_CHARACTER)
            return {character, 2};
        if (!isDigit(bytes[1])) {
            for (const Gb18030Exchange& row : GB18030_EXCHANGES) {
                if (row.code == (bytes[0] << 8 | bytes[1]))
                    return {row.character, 2};
            }
            return unmapped(bytes[1]);
        }
        if (length >= 3 && (bytes[2] < 0x81 || bytes[2] == 0xFF))
            return {Decoded::UNMAPPED, 1};
        if (length < 4)
            return {Decoded::UNMAPPED, 0};
        if (!isDigit(bytes[3]))
            return {Decoded::UNMAPPED, 1};
        return {characterOf(
                    ((bytes[0] - 0x81U) * 10 + bytes[1] - 0x30U) * 1260 + (bytes[2] - 0x81U) * 10 + bytes[3] - 0x30U),
            4};
    }

    int encode(std::uint32_t codePoint, unsigned char* bytes) const noexcept
    {
        if (codePoint < 0x10000) {
            if (const std::uint16_t code = m_table.codeOf(static_cast<char16_t>(codePoint)))
                return store(code, bytes);
            if (codePoint >= 0xD800 && codePoint < 0xE000)
                return 0;
        } else if (codePoint > 0x10FFFF) {
            return 0;
        }
        for (const Gb18030Exchange& row : GB18030_EXCHANGES) {
            if (row.character == codePoint)
                return store(row.code, bytes);
        }
        const std::uint32_t number = numberOf(codePoint);
        bytes[0] = static_cast<unsigned char>(0x81 + number / 12600);
        bytes[1] = static_cast<unsigned char>(0x30 + number / 1260 % 10);
        bytes[2] = static_cast<unsigned char>(0x81 + number / 10 % 126);
        bytes[3] = static_cast<unsigned char>(0x30 + number % 10);
        return 4;
    }

    const ReverseTable& codes() const noexcept { return m_table.codes(); }

private:
    static constexpr std::uint32_t SUPPLEMENTARY = 189000; ///< the number of U+10000

    static bool isDigit(unsigned char byte) noexcept { return byte >= 0x30 && byte <= 0x39; }

    /// The private character with which a new one has exchanged its code, or the other way round.
    static std::uint32_t exchanged(std::uint32_t codePoint) noexcept
    {
        for (const Gb18030Exchange& row : GB18030_EXCHANGES) {
            if (row.character == codePoint)
                return row.privateCharacter;
            if (row.privateCharacter == codePoint)
                return row.character;
        }
        return codePoint;
    }

    static std::uint32_t characterOf(std::uint32_t number) noexcept
    {
        if (number >= SUPPLEMENTARY && number <= SUPPLEMENTARY + 0xFFFFF)
            return exchanged(number - SUPPLEMENTARY + 0x10000);
        if (number > GB18030_LAST)
            return Decoded::UNMAPPED;
        const auto* const after = std::upper_bound(std::begin(GB18030_RANGES), std::end(GB18030_RANGES), number,
            [](std::uint32_t value, const Gb18030Range& range) { return value < range.code; });
        return exchanged(after[-1].character + (number - after[-1].code));
    }

    static std::uint32_t numberOf(std::uint32_t codePoint) noexcept
    {
        codePoint = exchanged(codePoint);
        if (codePoint >= 0x10000)
            return codePoint - 0x10000 + SUPPLEMENTARY;
        const auto* const after = std::upper_bound(std::begin(GB18030_RANGES), std::end(GB18030_RANGES), codePoint,
            [](std::uint32_t value, const Gb18030Range& range) { return value < range.character; });
        return after[-1].code + (codePoint - after[-1].character);
    }

    const DoubleByteTable& m_table;
};

} // namespace

Codec* makeShiftJisCodec(const CodePage& page)
{
    return new CharsetCodec<DoubleByte<shiftJisTable>>(page);
}

Codec* makeEucKrCodec(const CodePage& page)
{
    return new CharsetCodec<DoubleByte<eucKrTable>>(page);
}

Codec* makeGb18030Codec(const CodePage& page)
{
    return new CharsetCodec<Gb18030>(page);
}

} // namespace vx::components
