#pragma once

#include "vxsys/Api.h"

/// Result codes: signed 32-bit numbers in the HRESULT layout of the Windows component model. Negative is failure, 0 is
/// success, and a positive value is success with a special meaning.
#ifdef __cplusplus
namespace vxsys::results {

constexpr std::int32_t code(std::uint32_t bits) noexcept
{
    return static_cast<std::int32_t>(bits);
}

inline constexpr std::int32_t RESULT_OK = 0;
inline constexpr std::int32_t RESULT_FALSE = 1;
inline constexpr std::int32_t RESULT_NOT_IMPLEMENTED = code(0x80004001);
inline constexpr std::int32_t RESULT_NO_INTERFACE = code(0x80004002);
inline constexpr std::int32_t RESULT_POINTER = code(0x80004003);
inline constexpr std::int32_t RESULT_FAIL = code(0x80004005);
inline constexpr std::int32_t RESULT_NOT_AVAILABLE = code(0x80004007);
inline constexpr std::int32_t RESULT_BUFFER_TOO_SMALL = code(0x80004009);
inline constexpr std::int32_t RESULT_NO_AGGREGATION = code(0x80040110);
inline constexpr std::int32_t RESULT_CLASS_NOT_AVAILABLE = code(0x80040111);
inline constexpr std::int32_t RESULT_NOT_FOUND = code(0x80070002);
inline constexpr std::int32_t RESULT_PATH_NOT_FOUND = code(0x80070003);
inline constexpr std::int32_t RESULT_ACCESS_DENIED = code(0x80070005);
inline constexpr std::int32_t RESULT_INVALID_HANDLE = code(0x80070006);
inline constexpr std::int32_t RESULT_OUT_OF_MEMORY = code(0x8007000E);
inline constexpr std::int32_t RESULT_END_OF_FILE = code(0x80070026);
inline constexpr std::int32_t RESULT_INVALID_ARGUMENT = code(0x80070057);
inline constexpr std::int32_t RESULT_DISK_FULL = code(0x80070070);
inline constexpr std::int32_t RESULT_INVALID_NAME = code(0x8007007B);
inline constexpr std::int32_t RESULT_MODULE_NOT_FOUND = code(0x8007007E);
inline constexpr std::int32_t RESULT_SYMBOL_NOT_FOUND = code(0x8007007F);
inline constexpr std::int32_t RESULT_ALREADY_EXISTS = code(0x800700B7);
inline constexpr std::int32_t RESULT_BAD_MODULE = code(0x800700C1);
inline constexpr std::int32_t RESULT_NAME_TOO_LONG = code(0x800700CE);
inline constexpr std::int32_t RESULT_IS_DIRECTORY = code(0x80070150);
inline constexpr std::int32_t RESULT_NOT_PERMITTED = code(0x80070522);
inline constexpr std::int32_t RESULT_TIMED_OUT = code(0x800705B4);
inline constexpr std::int32_t RESULT_INVALID_CHARACTER = code(0x8BB34101);
inline constexpr std::int32_t RESULT_UNMAPPABLE_CHARACTER = code(0x8BB34102);
inline constexpr std::int32_t RESULT_UNKNOWN_ENCODING = code(0x8BB34103);

constexpr bool failed(std::int32_t result) noexcept
{
    return result < 0;
}

} // namespace vxsys::results

extern "C" {
#endif

/// The code for a native error number (`errno`): 0x80070000 plus the number of the documented Windows error of the same
/// meaning. 0x80004005 for an error without an equivalent, and 0 for 0. So do not call it for a failed operation that
/// left `errno` 0: the result would be success.
VXSYS_API int32_t VXResultFromNative(int32_t nativeError) VXSYS_NOEXCEPT;

/// The native error for which VXResultFromNative gives `result`. If there are several, the most frequent one; if there
/// is none, 0.
VXSYS_API int32_t VXResultToNative(int32_t result) VXSYS_NOEXCEPT;

/// The meaning of a result in English, in lower case and without a full stop. Null for a code that this library never
/// returns.
VXSYS_API const char16_t* VXResultGetText(int32_t result) VXSYS_NOEXCEPT;

#ifdef __cplusplus
}
#endif
