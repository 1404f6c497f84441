#include "vx/io/BitOutputStream.h"

#include "vx/Exceptions.h"
#include "vx/Result.h"
#include "vx/io/detail/StreamChecks.h"

namespace vx::io {

namespace {

constexpr int BYTE = 8;

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
    if (m_bits > 0)
        sink().write(static_cast<signed char>(m_byte << (BYTE - m_bits)));
    sink().flush();
    m_byte = 0;
    m_bits = 0;
}

void BitOutputStream::write(std::uint32_t value, int bits)
{
    constexpr int MOST = 32;
    if (bits < 1 || bits > MOST)
        throwResult(RESULT_INVALID_ARGUMENT);
    if (bits < MOST && value >> bits != 0)
        throw RangeErrorException(u"Number out of range");
    while (--bits >= 0)
        writeBit((value >> bits & 1) != 0);
}

void BitOutputStream::writeBit(bool bit)
{
    const auto byte = static_cast<std::uint8_t>(m_byte << 1 | (bit ? 1 : 0));
    if (m_bits + 1 < BYTE) {
        m_byte = byte;
        ++m_bits;
        return;
    }
    sink().write(static_cast<signed char>(byte)); // a failure leaves the bit to be written again
    m_byte = 0;
    m_bits = 0;
}

} // namespace vx::io
