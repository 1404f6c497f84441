#pragma once

#include "vxsys/Api.h"

#include <cstdint>

/// What the environment prefers. Functions with a `name` write it zero-terminated, in at most `size` units, the terminator
/// included. If there is no name, or no room for it, the text is empty. Negative is failure.
extern "C" {

/// The encoding of the environment's locale (LC_ALL, LC_CTYPE, LANG). "UTF-8" if the locale has none or has plain
/// ASCII.
VXSYS_API std::int32_t VXGetDefaultCharEncoding(char16_t* name, std::int32_t size) noexcept;
/// 1 if that encoding is UTF-8 by any of its usual names, otherwise 0. It takes less time than a comparison of the name.
VXSYS_API std::int32_t VXIsDefaultCharEncodingUtf8() noexcept;
/// Language and country of the environment's locale, for example "en_US", which is also the default.
VXSYS_API std::int32_t VXGetDefaultLocale(char16_t* name, std::int32_t size) noexcept;
}
