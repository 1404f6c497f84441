#pragma once

#include "vxsys/Api.h"

#include <cstdint>

/// What the environment prefers. Each writes a zero-terminated name of at most `size` units, terminator included, and
/// leaves an empty text where it has none to tell or the name does not fit. Negative is failure.
extern "C" {

/// The encoding of the environment's locale (LC_ALL, LC_CTYPE, LANG); "UTF-8" where it names none or plain ASCII.
VXSYS_API std::int32_t VXGetDefaultCharEncoding(char16_t* name, std::int32_t size) noexcept;
/// Language and country of the environment's locale, as "en_US"; "en_US" where it names none.
VXSYS_API std::int32_t VXGetDefaultLocale(char16_t* name, std::int32_t size) noexcept;
}
