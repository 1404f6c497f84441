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

/// One encoding. The record may be copied: the name is constant storage and must not be freed.
typedef struct VXEncInfo {
    const char16_t* name; ///< the canonical name
    uint32_t codePage; ///< never 0
    int32_t reserved; ///< 0
} VXEncInfo;

/// Finds an encoding by its name, an alias or the decimal text of its code page, without regard to case. 0x80070057 for
/// a null pointer, 0x80004005 for an unknown name; `*info` is written on success only. Encodings without a code page
/// have converters, but are not found here.
VX_API int32_t VXGetEncInfoByName(const char16_t* name, VXEncInfo* info);

/// As above, by the number.
VX_API int32_t VXGetEncInfoByCodePage(int32_t codePage, VXEncInfo* info);

/// Copies all records. `*count` is the size of `infos` and becomes the number of records. If there are more, the result
/// is 0x80004009 and nothing is copied. A `*count` of 0 asks for the number.
VX_API int32_t VXEnumerateEncInfo(uint32_t* count, VXEncInfo* infos);

#ifdef __cplusplus
}
#endif
