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

/// Behind the last element of an enumeration.
inline constexpr std::int32_t RESULT_NO_MORE_ITEMS = code(0x80070103);
/// A file of the store is not what was written there.
inline constexpr std::int32_t RESULT_STORE_CORRUPT = code(0x800703F1);

} // namespace vxsys::results

/// Settings that outlive the process: keys in a tree, below a hive each, and typed values with names in them. They lie in
/// files of one machine, in the folder that the environment's VXSYS4_REGISTRY names (a full path; not heard in programs
/// that run with another user's rights), otherwise in the user's data folder. The store belongs to the user or to root and
/// nobody else may write there: RESULT_ACCESS_DENIED for another one.
///
/// `key` is a path of names with backslashes between them, empty for the hive itself, which always exists; `name` is empty
/// for the default value. Names have at most 255 units (RESULT_NAME_TOO_LONG); lone surrogates give RESULT_INVALID_NAME.
/// Their case is kept from the first writing and tells nothing apart. Lengths of data count bytes, those of names units.
///
/// A change is on the disk, whole, when it returns, and at no moment has anybody seen a part of it. RESULT_NOT_FOUND where
/// there is no such key or value. Null gives RESULT_INVALID_ARGUMENT where nothing else is told. All are safe between
/// threads and processes.
extern "C" {

/// An open enumeration. It shows what was there when it was opened, in the order of the names without their case.
using VXRegistryEnum = struct VXRegistryEnumTag*;

/// Makes a key with all those above it. One that exists stays as it is.
VXSYS_API std::int32_t VXRegistryCreateKey(ENUM_VX_HKEY hive, const char16_t* key) noexcept;
/// Removes a key with everything below it. RESULT_ACCESS_DENIED for a hive.
VXSYS_API std::int32_t VXRegistryDeleteKey(ENUM_VX_HKEY hive, const char16_t* key) noexcept;

/// Sets a value, and makes its key. A number has exactly its 4 or 8 bytes and a text whole units, otherwise
/// RESULT_INVALID_ARGUMENT. `data` may be null for no bytes.
VXSYS_API std::int32_t VXRegistrySetValue(ENUM_VX_HKEY hive, const char16_t* key, const char16_t* name,
    ENUM_VX_REG_TYPE type, const void* data, std::int32_t length) noexcept;
/// Reads a value. Each out-parameter may be null, `length` only with `data`. `*length` is the room and becomes the length,
/// 0 where there is no value to read; RESULT_BUFFER_TOO_SMALL where it is longer, with its type and length told and `data`
/// as it was.
VXSYS_API std::int32_t VXRegistryGetValue(ENUM_VX_HKEY hive, const char16_t* key, const char16_t* name,
    ENUM_VX_REG_TYPE* type, void* data, std::int32_t* length) noexcept;
VXSYS_API std::int32_t VXRegistryDeleteValue(ENUM_VX_HKEY hive, const char16_t* key, const char16_t* name) noexcept;

/// Opens an enumeration of the keys right below `key`, or of its values. `*handle` is null after a failure.
VXSYS_API std::int32_t VXRegistryOpenKeyEnum(ENUM_VX_HKEY hive, const char16_t* key, VXRegistryEnum* handle) noexcept;
VXSYS_API std::int32_t VXRegistryOpenValueEnum(ENUM_VX_HKEY hive, const char16_t* key, VXRegistryEnum* handle) noexcept;
/// The next name, not terminated. `*nameLength` is the room and becomes the length; RESULT_BUFFER_TOO_SMALL where it is
/// longer, and the element is still the next. RESULT_NO_MORE_ITEMS at the end, RESULT_INVALID_HANDLE for an enumeration of
/// the other kind.
VXSYS_API std::int32_t VXRegistryEnumNextKey(VXRegistryEnum handle, char16_t* name, std::int32_t* nameLength) noexcept;
/// As above with the value. `type`, and `data` with `dataLength`, may be null. Data that is longer than the room is no
/// failure: it stays away, its length is told, and the result is RESULT_FALSE.
VXSYS_API std::int32_t VXRegistryEnumNextValue(VXRegistryEnum handle, char16_t* name, std::int32_t* nameLength,
    ENUM_VX_REG_TYPE* type, void* data, std::int32_t* dataLength) noexcept;
VXSYS_API std::int32_t VXRegistryCloseEnum(VXRegistryEnum handle) noexcept;
}
