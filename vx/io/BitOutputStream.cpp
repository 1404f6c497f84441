#include "vx/io/BitOutputStream.h"

#include "vx/Exceptions.h"
#include "vx/Result.h"
#include "vx/io/detail/StreamChecks.h"

namespace vx::io {

namespace {

constexpr int BYTE = 8;
constexpr int MOST = 32;

/// Throws unless `value` has at most `bits` bits, of which there are 1 to 32.
void requireFit(std::uint64_t value, int bits)
{
    if (bits < 1 || bits > MOST)
        throwResult(RESULT_INVALID_ARGUMENT);
    if (value >> bits != 0)
        throw RangeErrorException(u"Number out of range");
}

} // namespace

BitOutputStream::BitOutputStream(OutputStream* sink)
    : FilterOutputStream(sink)
{
}

void BitOutputStream::write(const signed char* bytes, std::int32_t length)
{
    if (length > 0)
        detail::requireUnits(bytes);
    for (std::int32_t index = 0; index < length; ++index)
        write(bytes[index]);
}

void BitOutputStream::write(signed char byte)
{
    write(std::uint32_t {static_cast<std::uint8_t>(byte)}, BYTE);
}

void BitOutputStream::flush()
{
    m_openTaken = 0;
    if (m_bits > 0) {
        sink().write(static_cast<signed char>(m_byte << (BYTE - m_bits)));
        m_byte = 0;
        m_bits = 0;
    }
    sink().flush(); // if it fails and is tried again, no second byte is added
}

void BitOutputStream::write(std::uint32_t value, int bits)
{
    requireFit(value, bits);
    const std::uint8_t byteBefore = m_byte;
    const int bitsBefore = m_bits;
    int taken = value == m_openValue && bits == m_openBits ? m_openTaken : 0;
    try {
        for (; taken < bits; ++taken)
            writeBit((value >> (bits - 1 - taken) & 1) != 0);
    } catch (...) {
        if (bitsBefore + taken < BYTE) { // no byte has been written yet
            m_byte = byteBefore;
            m_bits = bitsBefore;
        } else {
            m_openValue = value;
            m_openBits = bits;
            m_openTaken = taken;
        }
        throw;
    }
}

void BitOutputStream::writeBit(bool bit)
{
    m_openTaken = 0;
    const auto byte = static_cast<std::uint8_t>(m_byte << 1 | (bit ? 1 : 0));
    if (m_bits + 1 < BYTE) {
        m_byte = byte;
        ++m_bits;
        return;
    }
    sink().write(static_cast<signed char>(byte)); // after a failure the bit may be written again
    m_byte = 0;
    m_bits = 0;
}

void BitOutputStream::writeWide(std::uint64_t value, int bits)
{
    requireFit(value, bits);
    write(static_cast<std::uint32_t>(value), bits);
}

} // namespace vx::io
