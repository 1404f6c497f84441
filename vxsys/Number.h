#pragma once

#include "vxsys/Api.h"

#include <cstdint>

/// Numbers and text, in the rules of the C locale whatever the environment says.
extern "C" {

/// As `atoi`: leading white space, a sign, decimal digits; 0 where there is no number. Out of range clips to the range.
VXSYS_API std::int32_t VXStrToIW(const char16_t* text) noexcept;
/// As `strtol` and `strtoul` at 32 bits: `radix` 0 or 2 to 36; `*end` (if not null) gets the first unit not used. Out of
/// range clips to the range.
VXSYS_API std::int32_t VXStrToLW(const char16_t* text, const char16_t** end, std::int32_t radix) noexcept;
VXSYS_API std::uint32_t VXStrToULW(const char16_t* text, const char16_t** end, std::int32_t radix) noexcept;
/// As `strtod`.
VXSYS_API double VXStrToDW(const char16_t* text, const char16_t** end) noexcept;

/// Writes `value` in `radix` (2 to 36) with lower-case digits, zero-terminated; only radix 10 shows a sign, any other
/// prints the 32 bits as an unsigned number. Returns `target`, which must have room for 33 units and the terminator.
VXSYS_API char16_t* VXLToStrW(std::int32_t value, char16_t* target, std::int32_t radix) noexcept;
VXSYS_API char* VXLToStrA(std::int32_t value, char* target, std::int32_t radix) noexcept;
}
