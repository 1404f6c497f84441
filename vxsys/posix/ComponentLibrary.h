#pragma once

#include "vxsys/Component.h"

#include <cstdint>

/// Classes in shared libraries, found through the registry. A library is loaded when its first object is created, and
/// stays loaded until `freeUnusedLibraries` finds that it is not in use. Each operation returns a result code.
namespace vxsys::detail {

/// RESULT_CLASS_NOT_AVAILABLE if the registry has no such class.
std::int32_t findClass(const char16_t* progId, _GUID& classId) noexcept;
/// Creates an object through the class factory in the library of the class.
std::int32_t createFromLibrary(const _GUID& classId, IVXUnknown* outer, const _GUID* iid, void** object);

} // namespace vxsys::detail
