#pragma once

#include "vxsys/Api.h"

#ifdef __cplusplus
#include <cstring>
#endif

/// A 128-bit identifier of an interface or a class. The fields have the byte order of the machine. Only the text form
/// defines an order: the highest byte of each number comes first.
typedef struct _GUID {
    uint32_t Data1;
    uint16_t Data2;
    uint16_t Data3;
    uint8_t Data4[8];
} _GUID;

#ifdef __cplusplus

static_assert(sizeof(_GUID) == 16, "an identifier crosses component borders as 16 bytes");

inline bool operator==(const _GUID& left, const _GUID& right) noexcept
{
    return std::memcmp(&left, &right, sizeof(_GUID)) == 0;
}
#endif
