#pragma once

/// Text objects for C, which cannot construct a `vx::String` itself.

#include "vx/Api.h"
#include "vxsys/Guid.h"

#ifdef __cplusplus
extern "C" {
#endif

/// Creates a `vx::String` and stores its interface `iid`, `IVXCharBuffer` for example, with a reference for the caller.
/// `*out` is null after a failure. A `length` of -1 means text up to its terminator. A null text is an empty one.
VX_API int32_t VXCreateString(const char16_t* text, int32_t length, const _GUID* iid, void** out);
/// The same from UTF-8. `length` counts bytes. RESULT_INVALID_CHARACTER if it is not UTF-8.
VX_API int32_t VXCreateStringFromUtf8(const char* text, int32_t length, const _GUID* iid, void** out);

#ifdef __cplusplus
}
#endif
