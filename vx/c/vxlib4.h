#pragma once

/// The library for C11: components and the functions without classes. What a function says about exceptions does not matter
/// here: no function and no operation of a component lets one out. The one exception is `Get` of the library's own property
/// sets for a key that does not exist: so a component in C asks them only for keys that its documentation demands.

#include "vx/CreateString.h"
#include "vx/Library.h"
#include "vx/Version.h"
#include "vx/c/Interfaces.h"
#include "vx/vorb/ComponentClass.h"
#include "vxsys/Component.h"
#include "vxsys/Memory.h"
#include "vxsys/Result.h"
#include "vxsys/Text.h"

#include <stddef.h>

#ifdef __cplusplus
#define VX_C_EXPORT extern "C" __attribute__((visibility("default")))
#else
#define VX_C_EXPORT __attribute__((visibility("default")))
#endif

/// Releases what a variable points to, and sets the variable to null. It may be null already.
#define VX_RELEASE_OBJECT(object)                                                                                      \
    do {                                                                                                               \
        if ((object) != NULL)                                                                                          \
            (object)->operations->Release(object);                                                                     \
        (object) = NULL;                                                                                               \
    } while (0)

/// Defines the four functions that a component library exports. `module` is a `VXComponentModule`. Use it once in the
/// library.
#define VX_COMPONENT_LIBRARY_C(module)                                                                                 \
    VX_C_EXPORT int32_t VXGetClassObject(const _GUID* classId, const _GUID* iid, void** factory)                       \
    {                                                                                                                  \
        return VXComponentGetClassObject(&(module), classId, iid, factory);                                            \
    }                                                                                                                  \
    VX_C_EXPORT int32_t VXCanUnloadNow(void)                                                                           \
    {                                                                                                                  \
        return VXComponentCanUnloadNow(&(module));                                                                     \
    }                                                                                                                  \
    VX_C_EXPORT int32_t VXRegisterServer(void)                                                                         \
    {                                                                                                                  \
        return VXComponentRegisterServer(&(module));                                                                   \
    }                                                                                                                  \
    VX_C_EXPORT int32_t VXUnregisterServer(void)                                                                       \
    {                                                                                                                  \
        return VXComponentUnregisterServer(&(module));                                                                 \
    }

#ifdef __cplusplus
namespace vx::c {
extern "C" {
#endif

/// The reference count of an object that is written in C. Both return the new count. At 0 the object is to be destroyed.
static inline uint32_t VXCountUp(uint32_t* count)
{
    return __atomic_add_fetch(count, 1, __ATOMIC_RELAXED);
}
static inline uint32_t VXCountDown(uint32_t* count)
{
    return __atomic_sub_fetch(count, 1, __ATOMIC_ACQ_REL);
}

static inline int VXIsSameGuid(const _GUID* left, const _GUID* right)
{
    return VXComCompareGUID(left, right) == 0;
}

/// A new text with a reference for the caller. `length` is -1 for text up to its terminator.
static inline int32_t IVXCharBuffer_New(const char16_t* text, int32_t length, IVXCharBuffer** out)
{
    void* made = NULL;
    const int32_t result = VXCreateString(text, length, &VX_IID_IVXCharBuffer, &made);
    *out = (IVXCharBuffer*)made;
    return result;
}
/// The same from UTF-8. `length` counts bytes.
static inline int32_t IVXCharBuffer_NewUtf8(const char* text, int32_t length, IVXCharBuffer** out)
{
    void* made = NULL;
    const int32_t result = VXCreateStringFromUtf8(text, length, &VX_IID_IVXCharBuffer, &made);
    *out = (IVXCharBuffer*)made;
    return result;
}

/// Replaces the text of a buffer. `length` is -1 for text up to its terminator. A null text is empty; with a length, it is
/// VX_RESULT_INVALID_ARGUMENT.
static inline int32_t IVXCharBuffer_SetText(IVXCharBuffer* buffer, const char16_t* text, int32_t length)
{
    const int32_t count = length < 0 ? VXStrLenW(text) : length;
    char16_t* units = NULL;
    if (text == NULL && count > 0)
        return VX_RESULT_INVALID_ARGUMENT;
    const int32_t result = IVXCharBuffer_GetWriteLock(buffer, count, &units);
    if (result < 0)
        return result;
    for (int32_t i = 0; i < count; ++i)
        units[i] = text[i];
    return IVXCharBuffer_ReleaseWriteLock(buffer, count);
}

/// The text of a buffer as UTF-8, zero-terminated in `target` of `size` bytes. VX_RESULT_BUFFER_TOO_SMALL if there is no
/// room, VX_RESULT_INVALID_CHARACTER for a lone surrogate; `target` is empty then. 3 bytes for each unit of the text and one
/// more are always enough.
static inline int32_t IVXCharBuffer_GetUtf8(const IVXCharBuffer* buffer, char* target, int32_t size)
{
    const int32_t written
        = VXUnicodeToAnsi(IVXCharBuffer_GetData(buffer), IVXCharBuffer_GetLength(buffer), target, size);
    return written > 0 ? VX_RESULT_OK : written == 0 ? VX_RESULT_BUFFER_TOO_SMALL : VX_RESULT_INVALID_CHARACTER;
}

#ifdef __cplusplus
} // extern "C"
} // namespace vx::c
#endif
