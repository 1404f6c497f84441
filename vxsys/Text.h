#pragma once

#include "vxsys/Api.h"

#include <cstdint>

/// Zero-terminated text, UTF-16 unless a name ends in `A`. Each function means what its namesake of the C library means,
/// independent of the locale; positions and lengths count units. A null text is taken as an empty one, except that
/// nothing is found in it; a null target comes back as it is.
extern "C" {

/// Units before the terminator; a longer text than 2^31 - 1 counts as that.
VXSYS_API std::int32_t VXStrLenW(const char16_t* text) noexcept;
VXSYS_API std::int32_t VXStrLenA(const char* text) noexcept;

/// -1, 0 or 1 by unsigned unit value.
VXSYS_API std::int32_t VXStrCmpW(const char16_t* left, const char16_t* right) noexcept;
/// As above after `VXToLowerW` on each side, for `count` units at most. A count below 1 compares nothing.
VXSYS_API std::int32_t VXStrNICmpW(const char16_t* left, const char16_t* right, std::int32_t count) noexcept;
/// As above for exactly `count` units, zero units included. With a count, a null text comes before any other.
VXSYS_API std::int32_t VXMemNICmpW(const char16_t* left, const char16_t* right, std::int32_t count) noexcept;

/// The first place of `unit`, or null. The terminator is a place for the zero unit, as for `strchr`.
VXSYS_API const char16_t* VXStrChrW(const char16_t* text, char16_t unit) noexcept;
VXSYS_API const char* VXStrChrA(const char* text, char character) noexcept;

/// Returns `target`.
VXSYS_API char16_t* VXStrCpyW(char16_t* target, const char16_t* source) noexcept;
/// Writes exactly `count` units: what is missing is padded with zero units, and a source that has `count` units or more
/// is not terminated. Returns `target`.
VXSYS_API char16_t* VXStrNCpyW(char16_t* target, const char16_t* source, std::int32_t count) noexcept;

/// A copy that `VXStrFreeA` frees; null for null or on exhaustion.
VXSYS_API char* VXStrDupA(const char* text) noexcept;
VXSYS_API void VXStrFreeA(char* text) noexcept;

/// The next token of `text` (null: go on where `*position` stands), ended in place; null when none is left.
VXSYS_API char16_t* VXStrTokW(char16_t* text, const char16_t* delimiters, char16_t** position) noexcept;

/// Unicode's simple case mappings (UnicodeData.txt, version 15.0) of the basic plane; any other unit stays as it is.
VXSYS_API char16_t VXToLowerW(char16_t unit) noexcept;
VXSYS_API char16_t VXToUpperW(char16_t unit) noexcept;
/// In place, unit by unit. Returns `text`.
VXSYS_API char16_t* VXStrToLowerW(char16_t* text) noexcept;
VXSYS_API char16_t* VXStrToUpperW(char16_t* text) noexcept;

/// Narrow text towards the operating system: UTF-8, zero-terminated in `target` of `size` bytes. Returns the bytes
/// written with the terminator, 0 when `target` is too small, -1 for a lone surrogate or bad arguments; `target` is empty
/// after both. `length` -1 means a zero-terminated source.
VXSYS_API std::int32_t VXUnicodeToAnsi(
    const char16_t* source, std::int32_t length, char* target, std::int32_t size) noexcept;
}
