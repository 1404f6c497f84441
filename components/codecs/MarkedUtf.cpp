#include "StatefulCodec.h"

namespace vx::components {

namespace {

constexpr std::uint32_t MARK = 0xFEFF;

/// UTF-16 and UTF-32 with a byte order mark, by the width of a unit in bytes. The mark and all after it are written in
/// big-endian order. Text without a mark is read as big-endian, see RFC 2781.
template <int width>
class MarkedUtf final : public StatefulCodec {
public:
    explicit MarkedUtf(const CodePage& page) noexcept
        : StatefulCodec(page)
    {
    }

    std::int32_t Reset() override
    {
        m_order = Order::UNKNOWN;
        return RESULT_OK;
    }

private:
    enum class Order { UNKNOWN, BIG, LITTLE };

    static std::uint32_t unitAt(const unsigned char* bytes, Order order) noexcept
    {
        std::uint32_t unit = 0;
        for (int index = 0; index < width; ++index)
            unit = unit << 8 | bytes[order == Order::BIG ? index : width - 1 - index];
        return unit;
    }

    static void store(std::uint32_t unit, Encoding& pass) noexcept
    {
        for (int shift = 8 * width - 8; shift >= 0; shift -= 8)
            *pass.out++ = static_cast<unsigned char>(unit >> shift);
    }

    std::int32_t decodeText(Decoding& pass) override
    {
        if (m_order == Order::UNKNOWN && pass.left() >= width) {
            m_order = unitAt(pass.in, Order::LITTLE) == MARK ? Order::LITTLE : Order::BIG;
            if (unitAt(pass.in, m_order) == MARK)
                pass.in += width;
        }
        return m_order == Order::LITTLE ? decodeIn<Order::LITTLE>(pass) : decodeIn<Order::BIG>(pass);
    }

    template <Order order>
    static std::int32_t decodeIn(Decoding& pass) noexcept
    {
        if constexpr (width == 2) { // halves of pairs are not checked
            const std::ptrdiff_t count = std::min(pass.left() / width, pass.room());
            for (std::ptrdiff_t index = 0; index < count; ++index)
                pass.out[index] = static_cast<char16_t>(unitAt(pass.in + index * width, order));
            pass.in += count * width;
            pass.out += count;
        } else {
            for (; pass.left() >= width; pass.in += width) {
                const std::uint32_t value = unitAt(pass.in, order);
                if (value > vxsys::LAST_CODE_POINT || vxsys::isSurrogate(value))
                    return RESULT_UNMAPPABLE_CHARACTER;
                if (!storeUnits(value, pass))
                    break;
            }
        }
        return pass.left() >= width ? RESULT_BUFFER_TOO_SMALL : RESULT_OK;
    }

    int passOver(const unsigned char* bytes, int, std::uint32_t& codePoint) override
    {
        codePoint = unitAt(bytes, m_order);
        return width;
    }

    std::int32_t encodeText(Encoding& pass) override
    {
        for (; pass.in < pass.inEnd; ++pass.in) {
            std::uint32_t value = *pass.in;
            bool isPair = false;
            if (width == 4 && vxsys::isSurrogate(value)) {
                if (vxsys::isLead(value) && pass.left() == 1)
                    break;
                if (vxsys::isTrail(value) || !vxsys::isTrail(pass.in[1]))
                    return RESULT_UNMAPPABLE_CHARACTER;
                value = vxsys::codePoint(pass.in[0], pass.in[1]);
                isPair = true;
            }
            if (pass.room() < (m_order == Order::UNKNOWN ? 2 * width : width))
                return RESULT_BUFFER_TOO_SMALL;
            if (m_order == Order::UNKNOWN)
                store(MARK, pass);
            m_order = Order::BIG;
            store(value, pass);
            pass.in += isPair ? 1 : 0;
        }
        return RESULT_OK;
    }

    Order m_order = Order::UNKNOWN;
};

} // namespace

Codec* makeUtf16Codec(const CodePage& page)
{
    return new MarkedUtf<2>(page);
}

Codec* makeUtf32Codec(const CodePage& page)
{
    return new MarkedUtf<4>(page);
}

} // namespace vx::components
