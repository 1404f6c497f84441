#pragma once

#include "vxsys/Api.h"
#include "vxsys/Guid.h"

#ifdef __cplusplus
class IVXUnknown;
#else
typedef struct IVXUnknown IVXUnknown;
#endif

/// Creates components, by ProgID or by class identifier, and makes identifiers.
///
/// A class comes from an offer of the process or, if there is none, from a shared library that is registered in the
/// hive VX_HKEY_CLASSES_32 of the registry. There, below a key with the name of the ProgID, `CLSID` has the class
/// identifier. Below `CLSID` and the identifier in braces, `InprocServer32` has the path of the library. Both are
/// default values. They are read again after a change of the registry by any process; a change of its files by other
/// means is noticed after some milliseconds.
///
/// `module` is an address inside the calling library. A null out-parameter gives RESULT_POINTER, another null argument
/// RESULT_INVALID_ARGUMENT; `outer` may be null. All functions are thread-safe. None throws, but a thread may end by
/// `pthread_exit` in the code that they call.
#ifdef __cplusplus
extern "C" {
#endif

/// Says that the library around `module` is ready (1) or will soon be unloaded (0). Objects are only created for ready
/// modules.
VXSYS_API void VXModuleSetInitialized(const void* module, int32_t initialized) VXSYS_NOEXCEPT;

/// The class identifier of `progId`, which may be in any case. RESULT_CLASS_NOT_AVAILABLE and a zero identifier if
/// there is none, the failure of the registry if it cannot be read.
VXSYS_API int32_t VXComClassIDFromProgID(const char16_t* progId, _GUID* classId) VXSYS_NOEXCEPT;
/// Creates an object of a class and stores its interface `iid`, with a reference for the caller. `*object` is null
/// after a failure: RESULT_CLASS_NOT_AVAILABLE for an unknown class, RESULT_NOT_AVAILABLE for a module that is not
/// ready. A null `module` is the program itself, which is always ready.
///
/// A library is loaded once. If that fails, the result is that of `VXModuleLibOpen`, RESULT_INVALID_NAME if its path is
/// not a full one, RESULT_ACCESS_DENIED if a user other than root and the caller owns, or may write to, the file or a
/// folder above it, and RESULT_SYMBOL_NOT_FOUND if it does not export `VXGetClassObject`.
VXSYS_API int32_t VXModuleComCreateObject(
    const void* module, const _GUID* classId, IVXUnknown* outer, const _GUID* iid, void** object);
/// Both steps in one, for the program itself.
VXSYS_API int32_t VXComCreateObjectByProgID(const char16_t* progId, IVXUnknown* outer, const _GUID* iid, void** object);

/// Functions that a component library exports, as C functions whose names lack "Function". The first one stores the
/// factory of the class, whose interface `iid` is `IVXClassFactory`, with a reference for the caller. The second one
/// returns 0 if the library may be unloaded. A library without it is never unloaded.
typedef int32_t (*VXGetClassObjectFunction)(const _GUID* classId, const _GUID* iid, void** factory);
typedef int32_t (*VXCanUnloadNowFunction)(void);
/// Register the classes of the library, and remove them from the registry.
typedef int32_t (*VXRegisterServerFunction)(void);
typedef int32_t (*VXUnregisterServerFunction)(void);

/// Unloads the component libraries that report that they are not in use, and returns how many were unloaded. No thread
/// may be inside the last `Release` of an object of such a library.
VXSYS_API int32_t VXComFreeUnusedLibraries(void);
/// The same, and stores in `*kept` how many libraries are not in use but stay loaded: another part of the process has
/// opened them, or they define a symbol that is unique in the process, so that the system never unloads them.
VXSYS_API int32_t VXComFreeUnusedLibrariesAndCountKept(int32_t* kept);
/// Lets the component library at `path` register its classes, or remove them from the registry. Returns its result, or
/// that of loading it.
VXSYS_API int32_t VXComRegisterLibrary(const char16_t* path);
VXSYS_API int32_t VXComUnregisterLibrary(const char16_t* path);
/// RESULT_OK if objects can be created by the component library at `path`, otherwise the reason why not.
VXSYS_API int32_t VXComCheckLibrary(const char16_t* path) VXSYS_NOEXCEPT;

/// Creates one object and stores its interface `iid`, with a reference for the caller, or returns a negative result. If
/// it throws, the caller sees RESULT_OUT_OF_MEMORY or RESULT_FAIL.
typedef int32_t (*VXCreateFunction)(void* context, IVXUnknown* outer, const _GUID* iid, void** object);

/// Offers a class inside the process, under `classId` and, unless it is null, `progId`. Of several offers the last one
/// is used. `context` is passed to `create`. Both must stay valid until the offer is revoked by `*token`, which is
/// never 0.
VXSYS_API int32_t VXComRegisterClassObject(const char16_t* progId, const _GUID* classId, VXCreateFunction create,
    void* context, uint32_t* token) VXSYS_NOEXCEPT;
/// Returns when no other thread is inside the offer's `create` and none can enter it. RESULT_NOT_FOUND for an unknown
/// token.
VXSYS_API int32_t VXComRevokeClassObject(uint32_t token) VXSYS_NOEXCEPT;

/// A new identifier of random bits (RFC 4122, version 4).
VXSYS_API int32_t VXComGenerateGUID(_GUID* guid) VXSYS_NOEXCEPT;
/// Returns -1, 0 or 1, and compares the fields in their order. Null is below every identifier.
VXSYS_API int32_t VXComCompareGUID(const _GUID* left, const _GUID* right) VXSYS_NOEXCEPT;
/// Parses the form {00000000-0000-0000-C000-000000000046}, with digits in any case and nothing before or after it.
/// Anything else gives RESULT_INVALID_ARGUMENT and a zero identifier.
VXSYS_API int32_t VXComGUIDFromString(const char16_t* text, _GUID* guid) VXSYS_NOEXCEPT;
/// Writes that form in upper case: 38 units and the terminator. RESULT_BUFFER_TOO_SMALL if `size` is below 39.
VXSYS_API int32_t VXComStringFromGUID(const _GUID* guid, char16_t* text, int32_t size) VXSYS_NOEXCEPT;

#ifdef __cplusplus
}
#endif
