#pragma once

#include "vxsys/Api.h"

#include <cstdint>

/// The keyboard, which is the standard input of the process, and the terminal. Negative is failure.
extern "C" {

/// Delivers keys one by one and without echo until the matching end. Pairs may nest. Input that is not a terminal is
/// read unchanged. A signal that ends the process meanwhile and has no handler restores the terminal first.
VXSYS_API std::int32_t VXConsoleBeginKeys() noexcept;
VXSYS_API std::int32_t VXConsoleEndKeys() noexcept;

/// Waits for the next key, a value from 0 to 255. RESULT_END_OF_FILE at the end of the input. The erase key of the
/// terminal is returned as 8. A key that the terminal sends as several bytes is returned as several keys.
VXSYS_API std::int32_t VXConsoleReadKey(std::int32_t* key) noexcept;

/// RESULT_OK if the handle of a file refers to a terminal, otherwise RESULT_FALSE.
VXSYS_API std::int32_t VXConsoleIsTerminal(std::uint32_t handle) noexcept;
}
