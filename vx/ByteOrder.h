#pragma once

#include <bit>
#include <concepts>
#include <cstdint>
#include <cstring>

namespace vx::detail {

template <std::unsigned_integral Number>
constexpr Number swapBytes(Number number) noexcept
{
    if constexpr (sizeof(Number) == 2)
        return __builtin_bswap16(number);
    else if constexpr (sizeof(Number) == 4)
        return __builtin_bswap32(number);
    else if constexpr (sizeof(Number) == 8)
        return __builtin_bswap64(number);
    else
        return number;
}

/// The number at `bytes`, stored in `order`. The address need not be aligned.
template <std::unsigned_integral Number, std::endian order = std::endian::native>
Number loadNumber(const void* bytes) noexcept
{
    Number number;
    std::memcpy(&number, bytes, sizeof number);
    return order == std::endian::native ? number : swapBytes(number);
}

template <std::endian order = std::endian::native, std::unsigned_integral Number>
void storeNumber(void* bytes, Number number) noexcept
{
    if constexpr (order != std::endian::native)
        number = swapBytes(number);
    std::memcpy(bytes, &number, sizeof number);
}

} // namespace vx::detail
