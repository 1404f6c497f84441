#pragma once

/// Component libraries that are written in C, or in C++ without the classes of this library. Such a library has a table of
/// its classes, and exports the four functions that vxsys/Component.h describes. In C they come from VX_COMPONENT_LIBRARY_C.

#include "vx/Api.h"
#include "vxsys/Component.h"

#ifdef __cplusplus
extern "C" {
#endif

/// One class of a component library. A null text means that the class has none.
typedef struct VXComponentClass {
    const _GUID* classId; ///< null ends the table
    /// Creates an object and stores its interface `iid`, with a reference for the caller, or returns a negative result.
    /// `outer` is null, or an object that wants to aggregate the new one. `*object` is null before the call.
    int32_t (*create)(IVXUnknown* outer, const _GUID* iid, void** object);
    const char16_t* progId;
    const char16_t* versionIndependentProgId;
    const char16_t* description;
} VXComponentClass;

/// A component library. It is never copied.
typedef struct VXComponentModule {
    const VXComponentClass* classes; ///< not owned
    uint32_t locks; ///< of objects and factories that keep the library loaded; 0 at the start
} VXComponentModule;

/// Keep the library loaded, and end that. An object calls the first one when it is created, and the second one when it is
/// destroyed. Thread-safe.
VX_API void VXComponentLock(VXComponentModule* module);
VX_API void VXComponentUnlock(VXComponentModule* module);

/// The work of the exported functions. The factory keeps the library loaded. RESULT_CLASS_NOT_AVAILABLE for a class that
/// is in no row.
VX_API int32_t VXComponentGetClassObject(
    VXComponentModule* module, const _GUID* classId, const _GUID* iid, void** factory);
/// 0 if nothing keeps the library loaded, otherwise 1.
VX_API int32_t VXComponentCanUnloadNow(VXComponentModule* module);
/// Write the entries of all classes into the registry, and remove them. They stop at the first failure.
VX_API int32_t VXComponentRegisterServer(VXComponentModule* module);
VX_API int32_t VXComponentUnregisterServer(VXComponentModule* module);

#ifdef __cplusplus
}
#endif
