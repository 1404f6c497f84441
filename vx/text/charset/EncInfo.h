#pragma once

/// Encodings by name and by code page, for C and C++.

#include "vx/Api.h"

#include <stdint.h>
#ifndef __cplusplus
#include <uchar.h>
#endif

#ifdef __cplusplus
extern "C" {
#endif

/// One encoding. The record may be copied freely: the name is constant storage that nobody frees.
typedef struct VXEncInfo {
    const char16_t* name; ///< the canonical name
    uint32_t codePage; ///< never 0
    int32_t reserved; ///< 0
} VXEncInfo;

/// Finds an encoding by its name, an alias or the decimal text of its code page, in any case of letters. 0x80070057 for a
/// null pointer, 0x80004005 for a name that nobody knows; `*info` is written on success only. Encodings without a code
/// page are not found here, though converters know them.
VX_API int32_t VXGetEncInfoByName(const char16_t* name, VXEncInfo* info);

/// As above by the number.
VX_API int32_t VXGetEncInfoByCodePage(int32_t codePage, VXEncInfo* info);

/// Copies all records. `*count` is the room in `infos` and becomes the number of records; 0x80004009 when there are more
/// than there is room for, and nothing is copied. A `*count` of 0 asks for the number.
VX_API int32_t VXEnumerateEncInfo(uint32_t* count, VXEncInfo* infos);

#ifdef __cplusplus
}
#endif
