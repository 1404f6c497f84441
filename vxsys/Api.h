#pragma once

/// Marks what the platform layer exports; everything else is hidden.
#if defined(__GNUC__)
#define VXSYS_API __attribute__((visibility("default")))
#else
#define VXSYS_API
#endif

// For headers that C compilers also read.
#ifdef __cplusplus
#include <cstdint>
#define VXSYS_NOEXCEPT noexcept
#else
#include <stdint.h>
#include <uchar.h>
#define VXSYS_NOEXCEPT
#endif
