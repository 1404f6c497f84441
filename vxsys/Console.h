#pragma once

#include "vxsys/Api.h"

#include <cstdint>

/// The keyboard: the process's standard input. Negative is failure.
extern "C" {

/// Makes keys come one by one and unseen until the matching end; pairs may nest. Input that is no terminal is read as it
/// is. While it holds, a signal that ends the process and has no handler puts the terminal back first.
VXSYS_API std::int32_t VXConsoleBeginKeys() noexcept;
VXSYS_API std::int32_t VXConsoleEndKeys() noexcept;

/// Waits for the next key, a value from 0 to 255; RESULT_END_OF_FILE when no more will come. The terminal's own erase key
/// comes as 8; a key that the terminal sends as several bytes comes as several keys.
VXSYS_API std::int32_t VXConsoleReadKey(std::int32_t* key) noexcept;
}
