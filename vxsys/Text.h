#pragma once

#include "vxsys/Api.h"

/// Functions on zero-terminated text: UTF-16, or narrow if the name ends in `A`. Each does what the function of that
/// name in the C library does, independent of the locale. Positions and lengths count units. A null text is taken as an
/// empty one, except that a search in it finds nothing. A null target is returned as it is.
#ifdef __cplusplus
extern "C" {
#endif

/// The number of units before the terminator, at most 2^31 - 1.
VXSYS_API int32_t VXStrLenW(const char16_t* text) VXSYS_NOEXCEPT;
VXSYS_API int32_t VXStrLenA(const char* text) VXSYS_NOEXCEPT;

/// Returns -1, 0 or 1. Compares unsigned units.
VXSYS_API int32_t VXStrCmpW(const char16_t* left, const char16_t* right) VXSYS_NOEXCEPT;
/// As above, after `VXToLowerW` on both sides, and for at most `count` units. With a count below 1, all texts are
/// equal.
VXSYS_API int32_t VXStrNICmpW(const char16_t* left, const char16_t* right, int32_t count) VXSYS_NOEXCEPT;
/// As above for exactly `count` units, including zero units. With a count above 0, a null text is below any other.
VXSYS_API int32_t VXMemNICmpW(const char16_t* left, const char16_t* right, int32_t count) VXSYS_NOEXCEPT;

/// The first place of `unit`, or null. As in `strchr`, the place of the zero unit is the terminator.
VXSYS_API const char16_t* VXStrChrW(const char16_t* text, char16_t unit) VXSYS_NOEXCEPT;
VXSYS_API const char* VXStrChrA(const char* text, char character) VXSYS_NOEXCEPT;

/// Returns `target`.
VXSYS_API char16_t* VXStrCpyW(char16_t* target, const char16_t* source) VXSYS_NOEXCEPT;
/// Writes exactly `count` units and returns `target`. A shorter source is followed by zero units. A source of `count`
/// units or more is not terminated.
VXSYS_API char16_t* VXStrNCpyW(char16_t* target, const char16_t* source, int32_t count) VXSYS_NOEXCEPT;

/// A copy, to be freed by `VXStrFreeA`. Null for null, and if memory is exhausted.
VXSYS_API char* VXStrDupA(const char* text) VXSYS_NOEXCEPT;
VXSYS_API void VXStrFreeA(char* text) VXSYS_NOEXCEPT;

/// The next token of `text`, which is terminated in place. A null text continues at `*position`. Null if no token is
/// left.
VXSYS_API char16_t* VXStrTokW(char16_t* text, const char16_t* delimiters, char16_t** position) VXSYS_NOEXCEPT;

/// The simple case mappings of Unicode (UnicodeData.txt, version 15.0) up to U+FFFF. Any other unit stays as it is.
VXSYS_API char16_t VXToLowerW(char16_t unit) VXSYS_NOEXCEPT;
VXSYS_API char16_t VXToUpperW(char16_t unit) VXSYS_NOEXCEPT;
/// Changes the text in place, unit by unit, and returns it.
VXSYS_API char16_t* VXStrToLowerW(char16_t* text) VXSYS_NOEXCEPT;
VXSYS_API char16_t* VXStrToUpperW(char16_t* text) VXSYS_NOEXCEPT;

/// Converts text to UTF-8 for the operating system, zero-terminated in `target` of `size` bytes. Returns the number of
/// bytes written, the terminator included. 0 if `target` is too small, -1 for a lone surrogate or invalid arguments;
/// `target` is empty then. A `length` of -1 means a zero-terminated source.
VXSYS_API int32_t VXUnicodeToAnsi(const char16_t* source, int32_t length, char* target, int32_t size) VXSYS_NOEXCEPT;

#ifdef __cplusplus
}
#endif
