#include "vx/io/BitInputStream.h"

#include "vx/io/detail/StreamChecks.h"

#include <algorithm>

namespace vx::io {

namespace {

constexpr int MOST = 32;

} // namespace

BitInputStream::BitInputStream(InputStream* source)
    : FilterInputStream(source)
{
}

std::int32_t BitInputStream::read(signed char* target, std::int32_t length)
{
    if (length < 1)
        return -1;
    detail::requireUnits(target);
    std::int32_t done = 0;
    while (done < length) {
        const int byte = read();
        if (byte < 0)
            break;
        target[done++] = static_cast<signed char>(byte);
    }
    return done > 0 ? done : -1;
}

int BitInputStream::read()
{
    return read(8);
}

int BitInputStream::read(int bits)
{
    std::uint32_t value = 0;
    int taken = 0;
    try {
        for (; taken < bits; ++taken) {
            const int bit = readBit();
            if (bit < 0)
                return -1;
            value = value << 1 | static_cast<std::uint32_t>(bit);
        }
    } catch (...) { // no byte was read: the bits before it are kept for the next try
        m_current = value;
        m_bitsLeft = std::min(taken, MOST);
        throw;
    }
    return static_cast<int>(value);
}

int BitInputStream::readBit()
{
    if (m_bitsLeft == 0) {
        const int byte = source().read();
        if (byte < 0)
            return -1;
        m_current = static_cast<std::uint32_t>(byte);
        m_bitsLeft = 8;
    }
    --m_bitsLeft;
    return static_cast<int>(m_current >> m_bitsLeft & 1);
}

} // namespace vx::io
