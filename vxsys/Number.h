#pragma once

#include "vxsys/Api.h"

#include <cstdint>

/// Numbers and text, in the rules of the C locale whatever the environment says. A null text has no number.
extern "C" {

/// As `atoi`: leading white space, a sign, decimal digits; 0 where there is no number. Out of range clips to the range.
VXSYS_API std::int32_t VXStrToIW(const char16_t* text) noexcept;
/// As `strtol` and `strtoul` at 32 bits: `radix` is 0, which goes by the prefix, or 2 to 36, and any other reads nothing;
/// `*end` (if not null) gets the first unit not used. Out of range clips to the range, but a negative text that fits
/// gives `VXStrToULW` its 32 bits.
VXSYS_API std::int32_t VXStrToLW(const char16_t* text, const char16_t** end, std::int32_t radix) noexcept;
VXSYS_API std::uint32_t VXStrToULW(const char16_t* text, const char16_t** end, std::int32_t radix) noexcept;
/// As `strtod`: decimal or hexadecimal, "inf", "nan". Too large gives an infinity, too small a 0, each with its sign.
VXSYS_API double VXStrToDW(const char16_t* text, const char16_t** end) noexcept;

/// Writes `value` in `radix` (2 to 36) with lower-case digits, zero-terminated; only radix 10 shows a sign, any other
/// prints the 32 bits as an unsigned number. Another radix writes an empty text. Returns `target`, which must have room for
/// 32 units and the terminator.
VXSYS_API char16_t* VXLToStrW(std::int32_t value, char16_t* target, std::int32_t radix) noexcept;
VXSYS_API char* VXLToStrA(std::int32_t value, char* target, std::int32_t radix) noexcept;
}
