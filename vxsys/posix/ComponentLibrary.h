#pragma once

#include "vxsys/Component.h"

#include <cstdint>

/// Classes that stand in shared libraries, by what the registry says. A library comes into the process with the first
/// object that is asked of it, and stays until `freeUnusedLibraries` finds that nothing of it is in use. Each operation gives
/// a result code.
namespace vxsys::detail {

/// RESULT_CLASS_NOT_AVAILABLE where the registry has no such class.
std::int32_t findClass(const char16_t* progId, _GUID& classId) noexcept;
/// Has the library of the class create an object through its class factory.
std::int32_t createFromLibrary(const _GUID& classId, IVXUnknown* outer, const _GUID* iid, void** object);

} // namespace vxsys::detail
