#pragma once

#include "vxsys/Api.h"

#include <cstdint>

/// Shared libraries. `module` names the calling library by an address inside it, as in vxsys/Component.h; null is the
/// program. Negative results are failures, null arguments give RESULT_INVALID_ARGUMENT.
extern "C" {

using VXLibHandle = std::uintptr_t;

inline constexpr VXLibHandle VX_LIB_INVALID_HANDLE = UINTPTR_MAX;

/// Loads a library, or opens it once more. A `name` with a separator or a drive is a path; any other name is looked for
/// where the system's loader looks. Its undefined symbols are resolved at once, and no other library can use its own
/// symbols. RESULT_NOT_FOUND if the path does not exist, RESULT_MODULE_NOT_FOUND if the library or one that it needs cannot
/// be loaded, RESULT_BAD_MODULE for a file that is no library of this machine. `*handle` is `VX_LIB_INVALID_HANDLE` then.
VXSYS_API std::int32_t VXModuleLibOpen(const void* module, const char16_t* name, VXLibHandle* handle) noexcept;
/// Closes the library. When it was closed as often as it was opened, it leaves the process.
VXSYS_API std::int32_t VXModuleLibClose(const void* module, VXLibHandle handle) noexcept;
/// The full path of the library's file as the system writes it, with "/", zero-terminated in `name` of `size` units.
/// RESULT_BUFFER_TOO_SMALL where it does not fit, RESULT_NOT_FOUND for an address in no library; `name` is empty then.
VXSYS_API std::int32_t VXModuleGetFileName(const void* module, char16_t* name, std::int32_t size) noexcept;
/// The address of an exported symbol; RESULT_SYMBOL_NOT_FOUND and null where there is none.
VXSYS_API std::int32_t VXLibGetSymbol(VXLibHandle handle, const char16_t* name, void** symbol) noexcept;
}
