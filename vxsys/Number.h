#pragma once

#include "vxsys/Api.h"

#include <cstdint>

/// Converts numbers to and from text, in the C locale whatever the environment is. A null text has no number.
extern "C" {

/// As `atoi`: leading white space, a sign and decimal digits; 0 if there is no number. A number out of range gives the
/// nearest limit.
VXSYS_API std::int32_t VXStrToIW(const char16_t* text) noexcept;
/// As `strtol` and `strtoul` with 32 bits. A `radix` of 0 means that the prefix decides; otherwise it is 2 to 36, and
/// any other radix reads nothing. `*end` (if not null) becomes the first unit that was not read. A number out of range
/// gives the nearest limit, but `VXStrToULW` converts a negative number that fits in 32 bits.
VXSYS_API std::int32_t VXStrToLW(const char16_t* text, const char16_t** end, std::int32_t radix) noexcept;
VXSYS_API std::uint32_t VXStrToULW(const char16_t* text, const char16_t** end, std::int32_t radix) noexcept;
/// As `strtod`: decimal or hexadecimal, "inf", "nan". A number that is too large gives an infinity and one that is too
/// small a 0, with its sign.
VXSYS_API double VXStrToDW(const char16_t* text, const char16_t** end) noexcept;

/// Writes `value` in `radix` (2 to 36) with lower-case digits, zero-terminated. Only radix 10 writes a sign; in the
/// others the 32 bits are an unsigned number. Any other radix gives an empty text. Returns `target`, which must have
/// room for 32 units and the terminator.
VXSYS_API char16_t* VXLToStrW(std::int32_t value, char16_t* target, std::int32_t radix) noexcept;
VXSYS_API char* VXLToStrA(std::int32_t value, char* target, std::int32_t radix) noexcept;
}
