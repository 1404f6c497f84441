#pragma once

#include "vxsys/Api.h"
#include "vxsys/Result.h"

#include <cstdint>

/// The parts of the store of settings. Those ending in 32 and 64 are two views of what belongs to the machine.
enum ENUM_VX_HKEY : std::uint32_t {
    VX_HKEY_CLASSES_32 = 0,
    VX_HKEY_CONFIG_32 = 1,
    VX_HKEY_USER = 2,
    VX_HKEY_CLASSES_64 = 3,
    VX_HKEY_CONFIG_64 = 4
};

enum ENUM_VX_REG_TYPE : std::int32_t {
    VX_REG_STRING = 0, ///< UTF-16 with its terminator
    VX_REG_UINT32 = 1,
    VX_REG_UINT64 = 2,
    VX_REG_BINARY = 3
};

namespace vxsys::results {

/// After the last element of an enumeration.
inline constexpr std::int32_t RESULT_NO_MORE_ITEMS = code(0x80070103);
/// A file of the store is not what was written there.
inline constexpr std::int32_t RESULT_STORE_CORRUPT = code(0x800703F1);

} // namespace vxsys::results

/// Settings that outlive the process: trees of keys, one tree a hive, and in each key typed values with names. They are
/// stored in files of one machine: in the folder that the environment variable VXSYS4_REGISTRY names (a full path; ignored
/// in programs that run with another user's rights), otherwise in the user's data folder. The store must belong to the
/// user or to root, and no other user may be able to write there; any other store gives RESULT_ACCESS_DENIED.
///
/// A second store, that of all users, is read after the user's: a key or value that the user's store does not have is
/// looked for there, and an enumeration shows the elements of both, the user's one of two with the same name. Changes are
/// made in the user's store only. The removal of what only all users have gives RESULT_ACCESS_DENIED. The variable
/// VXSYS4_MACHINE_REGISTRY names another place for it; an empty one means that there is none. The same rules of trust
/// hold: if the store could have been changed by a user other than root and the caller, what the user's store does not
/// have gives RESULT_ACCESS_DENIED. To change it, root names its place in VXSYS4_REGISTRY.
///
/// `key` is a path of names with backslashes between them, empty for the hive itself, which always exists; `name` is empty
/// for the default value. Names have at most 255 units (RESULT_NAME_TOO_LONG); lone surrogates give RESULT_INVALID_NAME.
/// Two names that differ only in case are one name, stored as it was first written. Lengths of data count bytes, lengths of
/// names count units.
///
/// When a call returns, its change is on the disk as a whole, and no reader ever sees a part of it. RESULT_NOT_FOUND if
/// there is no such key or value. Null gives RESULT_INVALID_ARGUMENT unless a comment says otherwise. All calls are safe
/// between threads and processes.
extern "C" {

/// An open enumeration. It shows what was there when it was opened, in the order of the names without their case.
using VXRegistryEnum = struct VXRegistryEnumTag*;

/// Creates a key with all keys above it. A key that exists stays as it is.
VXSYS_API std::int32_t VXRegistryCreateKey(ENUM_VX_HKEY hive, const char16_t* key) noexcept;
/// Removes a key with everything below it. RESULT_ACCESS_DENIED for a hive.
VXSYS_API std::int32_t VXRegistryDeleteKey(ENUM_VX_HKEY hive, const char16_t* key) noexcept;

/// Sets a value, and creates its key if needed. A number has exactly 4 or 8 bytes and a text whole units, otherwise
/// RESULT_INVALID_ARGUMENT. `data` may be null for no bytes.
VXSYS_API std::int32_t VXRegistrySetValue(ENUM_VX_HKEY hive, const char16_t* key, const char16_t* name,
    ENUM_VX_REG_TYPE type, const void* data, std::int32_t length) noexcept;
/// Reads a value. Each out-parameter may be null, `length` only together with `data`. `*length` is the size of `data` and
/// becomes the length of the value, 0 if it cannot be read. RESULT_BUFFER_TOO_SMALL for a longer value: type and length are
/// set, and `data` stays as it was.
VXSYS_API std::int32_t VXRegistryGetValue(ENUM_VX_HKEY hive, const char16_t* key, const char16_t* name,
    ENUM_VX_REG_TYPE* type, void* data, std::int32_t* length) noexcept;
VXSYS_API std::int32_t VXRegistryDeleteValue(ENUM_VX_HKEY hive, const char16_t* key, const char16_t* name) noexcept;

/// Opens an enumeration of the keys directly below `key`, or of its values. `*handle` is null after a failure.
VXSYS_API std::int32_t VXRegistryOpenKeyEnum(ENUM_VX_HKEY hive, const char16_t* key, VXRegistryEnum* handle) noexcept;
VXSYS_API std::int32_t VXRegistryOpenValueEnum(ENUM_VX_HKEY hive, const char16_t* key, VXRegistryEnum* handle) noexcept;
/// The next name, not terminated. `*nameLength` is the size of `name` and becomes the length of the name.
/// RESULT_BUFFER_TOO_SMALL for a longer name, which stays the next one. RESULT_NO_MORE_ITEMS at the end,
/// RESULT_INVALID_HANDLE for an enumeration of the other kind.
VXSYS_API std::int32_t VXRegistryEnumNextKey(VXRegistryEnum handle, char16_t* name, std::int32_t* nameLength) noexcept;
/// The same together with the value. `type`, and `data` with `dataLength`, may be null. Data that is longer than `data` is
/// no failure: only its length is set, and the result is RESULT_FALSE.
VXSYS_API std::int32_t VXRegistryEnumNextValue(VXRegistryEnum handle, char16_t* name, std::int32_t* nameLength,
    ENUM_VX_REG_TYPE* type, void* data, std::int32_t* dataLength) noexcept;
VXSYS_API std::int32_t VXRegistryCloseEnum(VXRegistryEnum handle) noexcept;

/// Writes the path of the user's store, which need not exist, as bytes with a terminator. RESULT_BUFFER_TOO_SMALL if
/// `size` bytes are not enough.
VXSYS_API std::int32_t VXRegistryGetPlace(char* place, std::int32_t size) noexcept;
/// The same for the store of all users. The path is empty if there is none.
VXSYS_API std::int32_t VXRegistryGetMachinePlace(char* place, std::int32_t size) noexcept;
}
