#pragma once

#include "vxsys/Api.h"
#include "vxsys/Guid.h"

#include <cstdint>

class IVXUnknown;

/// Components by ProgID and class identifier, and identifiers themselves. Classes come from offers of the process first, then
/// from shared libraries by what the hive VX_HKEY_CLASSES_32 of the registry says: below a key named by the ProgID, `CLSID`
/// holds the class identifier; below `CLSID` and the identifier in braces, `InprocServer32` holds the library, both as
/// default values. `module` names the calling library by an address inside it. A null out-parameter gives RESULT_POINTER,
/// another null argument RESULT_INVALID_ARGUMENT; `outer` may be null. All are safe between threads. None throws, but a thread
/// may end by `pthread_exit` in the code that they call.
extern "C" {

/// Tells that the library around `module` is ready (1) or about to leave (0). Objects are created for ready modules only.
VXSYS_API void VXModuleSetInitialized(const void* module, std::int32_t initialized) noexcept;

/// The class identifier that `progId`, in any case, names; RESULT_CLASS_NOT_AVAILABLE and a zero identifier where there is
/// none, and the registry's failure where it cannot be read.
VXSYS_API std::int32_t VXComClassIDFromProgID(const char16_t* progId, _GUID* classId) noexcept;
/// Creates an object of a class and gives its interface `iid`, counted for the caller; `*object` is null after a failure.
/// RESULT_CLASS_NOT_AVAILABLE for an unknown class, RESULT_NOT_AVAILABLE for a module that is not ready. A null
/// `module` is the program itself, which always is. A library that serves is loaded once; for one that cannot be, the results
/// of `VXModuleLibOpen`, RESULT_SYMBOL_NOT_FOUND without `VXGetClassObject`, RESULT_INVALID_NAME for a path that is no full
/// one, and RESULT_ACCESS_DENIED unless it and the folders above it are the user's or root's and nobody else may write there.
VXSYS_API std::int32_t VXModuleComCreateObject(
    const void* module, const _GUID* classId, IVXUnknown* outer, const _GUID* iid, void** object);
/// Both steps in one, for the program itself.
VXSYS_API std::int32_t VXComCreateObjectByProgID(
    const char16_t* progId, IVXUnknown* outer, const _GUID* iid, void** object);

/// What a component library exports under these names less "Function", as C functions. The first gives the class's factory,
/// which in `iid` is asked for as `IVXClassFactory`, counted for the caller. The second gives 0 when nothing of the library is
/// in use; one without it stays in the process.
using VXGetClassObjectFunction = std::int32_t (*)(const _GUID* classId, const _GUID* iid, void** factory);
using VXCanUnloadNowFunction = std::int32_t (*)();
/// Write the library's classes into the registry, and take them out again.
using VXRegisterServerFunction = std::int32_t (*)();
using VXUnregisterServerFunction = std::int32_t (*)();

/// Takes out of the process the component libraries that say that they are not in use, and gives the number of those that
/// have left it. No thread may be inside the last `Release` of an object of theirs.
VXSYS_API std::int32_t VXComFreeUnusedLibraries();
/// The same, and tells in `*kept` how many libraries are not in use but stay in the process all the same: another part of it
/// has them open, or the system's loader keeps them because they define a symbol that the whole process shares.
VXSYS_API std::int32_t VXComFreeUnusedLibrariesAndCountKept(std::int32_t* kept);
/// Has the component library at `path` write its classes into the registry, or take them out. Its failures, or those of its
/// loading.
VXSYS_API std::int32_t VXComRegisterLibrary(const char16_t* path);
VXSYS_API std::int32_t VXComUnregisterLibrary(const char16_t* path);
/// Whether objects could come from the component library at `path`: RESULT_OK, or why not.
VXSYS_API std::int32_t VXComCheckLibrary(const char16_t* path) noexcept;

/// Creates one object and gives its interface `iid`, counted for the caller, or a negative result. An exception that
/// leaves it becomes RESULT_OUT_OF_MEMORY or RESULT_FAIL.
using VXCreateFunction = std::int32_t (*)(void* context, IVXUnknown* outer, const _GUID* iid, void** object);

/// Offers a class inside the process: under `classId`, and under `progId` if that is not null. Of several offers the last
/// one serves. `context` is handed to `create`; both stay in use until the offer is revoked by `*token`, which is never 0.
VXSYS_API std::int32_t VXComRegisterClassObject(const char16_t* progId, const _GUID* classId, VXCreateFunction create,
    void* context, std::uint32_t* token) noexcept;
/// Returns when no other thread is inside the offer's `create` any more, and none will enter it. RESULT_NOT_FOUND for an
/// unknown token.
VXSYS_API std::int32_t VXComRevokeClassObject(std::uint32_t token) noexcept;

/// A new identifier of random bits (RFC 4122, version 4).
VXSYS_API std::int32_t VXComGenerateGUID(_GUID* guid) noexcept;
/// -1, 0 or 1, field by field in their order. Null comes before any identifier.
VXSYS_API std::int32_t VXComCompareGUID(const _GUID* left, const _GUID* right) noexcept;
/// Takes the form {00000000-0000-0000-C000-000000000046}, digits in any case, and nothing around it. Anything else gives
/// RESULT_INVALID_ARGUMENT and a zero identifier.
VXSYS_API std::int32_t VXComGUIDFromString(const char16_t* text, _GUID* guid) noexcept;
/// Writes that form in upper case: 38 units and the terminator. RESULT_BUFFER_TOO_SMALL where `size` is below 39.
VXSYS_API std::int32_t VXComStringFromGUID(const _GUID* guid, char16_t* text, std::int32_t size) noexcept;
}
