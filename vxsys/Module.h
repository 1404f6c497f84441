#pragma once

#include "vxsys/Api.h"

#include <cstdint>

/// Shared libraries. `module` is an address inside the calling library, as in vxsys/Component.h; null is the program.
/// Negative results are failures. Null arguments give RESULT_INVALID_ARGUMENT.
extern "C" {

using VXLibHandle = std::uintptr_t;

inline constexpr VXLibHandle VX_LIB_INVALID_HANDLE = UINTPTR_MAX;

/// Loads a library, or opens a loaded one again. A `name` with a separator or a drive is a path. Any other name is
/// searched for by the system's loader. Undefined symbols are resolved at once, and the library's symbols are not
/// visible to other libraries. After a failure `*handle` is `VX_LIB_INVALID_HANDLE`: RESULT_NOT_FOUND if the path does
/// not exist, RESULT_MODULE_NOT_FOUND if the library or one that it needs cannot be loaded, RESULT_BAD_MODULE if the
/// file is not a library for this machine.
VXSYS_API std::int32_t VXModuleLibOpen(const void* module, const char16_t* name, VXLibHandle* handle) noexcept;
/// Closes the library. It is unloaded when it has been closed as often as it was opened.
VXSYS_API std::int32_t VXModuleLibClose(const void* module, VXLibHandle handle) noexcept;
/// Writes the full path of the library's file in the form of the system, with "/", to `name` of `size` units,
/// zero-terminated. `name` is empty after a failure: RESULT_BUFFER_TOO_SMALL if there is no room, RESULT_NOT_FOUND if
/// the address is in no library.
VXSYS_API std::int32_t VXModuleGetFileName(const void* module, char16_t* name, std::int32_t size) noexcept;
/// The address of an exported symbol. RESULT_SYMBOL_NOT_FOUND and null if there is none.
VXSYS_API std::int32_t VXLibGetSymbol(VXLibHandle handle, const char16_t* name, void** symbol) noexcept;
}
