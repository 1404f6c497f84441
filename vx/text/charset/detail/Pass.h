#pragma once

#include "vx/text/charset/detail/Unicode.h"

#include <cstddef>
#include <cstdint>

namespace vx::text::charset::detail {

/// The two positions of one call of `convert`. `in` and `out` advance over whole characters only. At the end of the
/// call, also by an exception, the caller's positions are set to them.
template <class In, class Out>
class Pass {
public:
    Pass(const In* src, std::int32_t* srcPos, std::int32_t srcLen, Out* dst, std::int32_t* dstPos,
        std::int32_t dstLen) noexcept
        : m_srcPos(srcPos)
        , m_dstPos(dstPos)
        , m_srcStart(*srcPos)
        , m_dstStart(*dstPos)
        , m_inStart(src + *srcPos)
        , m_outStart(dst + *dstPos)
        , in(m_inStart)
        , inEnd(m_inStart + (srcLen > *srcPos ? srcLen - *srcPos : 0))
        , out(m_outStart)
        , outEnd(m_outStart + (dstLen > *dstPos ? dstLen - *dstPos : 0))
    {
    }
    Pass(const Pass&) = delete;
    Pass& operator=(const Pass&) = delete;
    ~Pass()
    {
        *m_srcPos = m_srcStart + static_cast<std::int32_t>(in - m_inStart);
        *m_dstPos = m_dstStart + produced();
    }

    std::ptrdiff_t left() const noexcept { return inEnd - in; }
    std::ptrdiff_t room() const noexcept { return outEnd - out; }
    std::int32_t produced() const noexcept { return static_cast<std::int32_t>(out - m_outStart); }

private:
    std::int32_t* m_srcPos;
    std::int32_t* m_dstPos;
    std::int32_t m_srcStart;
    std::int32_t m_dstStart;
    const In* m_inStart;
    Out* m_outStart;

public:
    const In* in;
    const In* const inEnd;
    Out* out;
    Out* const outEnd;
};

using Decoding = Pass<signed char, char16_t>;
using Encoding = Pass<char16_t, signed char>;

/// Stores a supplementary character as its surrogate pair. Returns false if there is no room.
inline bool storePair(Decoding& pass, std::uint32_t value) noexcept
{
    if (pass.room() < 2)
        return false;
    *pass.out++ = leadOf(value);
    *pass.out++ = trailOf(value);
    return true;
}

} // namespace vx::text::charset::detail
