#pragma once

#include "vxsys/detail/Vector.h"

// 64 bytes at a time, on processors that can.

#if VX_VECTOR_PATHS

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <immintrin.h>

/// For functions that are called only if `hasCompress` returns true.
#define VX_USES_COMPRESS __attribute__((target("avx512f,avx512bw,avx512vl,avx512vbmi2,bmi2")))

namespace vx::text::charset::detail {

/// Whether the processor can move the lanes that are kept next to each other.
inline bool hasCompress() noexcept
{
#ifdef VX_NO_AVX512
    return false;
#else
    return __builtin_cpu_supports("avx512vbmi2") != 0 && __builtin_cpu_supports("avx512vl") != 0
        && __builtin_cpu_supports("avx512bw") != 0 && __builtin_cpu_supports("bmi2") != 0;
#endif
}

/// Bytes of a block.
inline constexpr std::ptrdiff_t LANES = 64;

/// One bit for each of the first `count` lanes. A count above LANES means all.
VX_USES_COMPRESS inline std::uint64_t firstLanes(std::ptrdiff_t count) noexcept
{
    return _bzhi_u64(~std::uint64_t {0}, static_cast<std::uint64_t>(std::min(count, LANES)));
}

} // namespace vx::text::charset::detail

#endif
