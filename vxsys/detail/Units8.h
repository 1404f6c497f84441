#pragma once

#include "vxsys/detail/Vector.h"

#include <bit>
#include <cstdint>
#include <cstring>

#if VX_VECTOR_PATHS
#include <emmintrin.h>
#endif

namespace vxsys::detail {

/// Eight UTF-16 units in one register. The result of a comparison has 0xFFFF in each lane where it is true, otherwise
/// 0.
using Units8 __attribute__((vector_size(16), may_alias)) = std::uint16_t;

inline constexpr unsigned UNITS8 = 8;

inline Units8 load8(const char16_t* source) noexcept
{
    Units8 units;
    std::memcpy(&units, source, sizeof units);
    return units;
}

inline void store8(char16_t* target, Units8 units) noexcept
{
    std::memcpy(target, &units, sizeof units);
}

/// Bits 2i and 2i + 1 belong to lane i.
inline unsigned maskOf(Units8 lanes) noexcept
{
#if VX_VECTOR_PATHS
    return static_cast<unsigned>(_mm_movemask_epi8(std::bit_cast<__m128i>(lanes)));
#else
    unsigned mask = 0;
    for (unsigned i = 0; i < UNITS8; ++i)
        mask |= (lanes[i] & 3U) << (2 * i);
    return mask;
#endif
}

inline constexpr unsigned ALL_LANES = 0xFFFF;

inline Units8 everyLane(std::uint16_t unit) noexcept
{
    return Units8 {unit, unit, unit, unit, unit, unit, unit, unit};
}

inline Units8 lanesWithin(Units8 units, char16_t first, char16_t last) noexcept
{
    return Units8((units >= everyLane(first)) & (units <= everyLane(last)));
}

inline bool isAscii(Units8 units) noexcept
{
    return maskOf(Units8((units & everyLane(0xFF80)) == everyLane(0))) == ALL_LANES;
}

} // namespace vxsys::detail
