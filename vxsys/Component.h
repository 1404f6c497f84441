#pragma once

#include "vxsys/Api.h"
#include "vxsys/Guid.h"

#include <cstdint>

class IVXUnknown;

/// Components by ProgID and class identifier, and identifiers themselves. `module` names the calling library by an
/// address inside it.
extern "C" {

/// Tells that the library around `module` is ready (1) or about to leave (0). Objects are created for ready modules only.
VXSYS_API void VXModuleSetInitialized(const void* module, std::int32_t initialized) noexcept;

/// The class identifier that `progId` names; RESULT_CLASS_NOT_AVAILABLE and a zero identifier where there is none.
VXSYS_API std::int32_t VXComClassIDFromProgID(const char16_t* progId, _GUID* classId) noexcept;
/// Creates an object of a class and gives its interface `iid`, counted for the caller; `*object` is null after a failure.
VXSYS_API std::int32_t VXModuleComCreateObject(
    const void* module, const _GUID* classId, IVXUnknown* outer, const _GUID* iid, void** object) noexcept;
/// Both steps in one.
VXSYS_API std::int32_t VXComCreateObjectByProgID(
    const char16_t* progId, IVXUnknown* outer, const _GUID* iid, void** object) noexcept;

/// 1 when the two are the same 16 bytes, else 0.
VXSYS_API std::int32_t VXComCompareGUID(const _GUID* left, const _GUID* right) noexcept;
}
