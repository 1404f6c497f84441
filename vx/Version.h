#pragma once

/// The version of the library, for C and C++. A library that is loaded may be newer than the headers that a program was
/// compiled with: libraries with the same major number can replace each other, upwards in the minor number.

#include "vx/Api.h"

#include <stdint.h>

// The project takes its version from these three lines.
#define VXLIB4_VERSION_MAJOR 4
#define VXLIB4_VERSION_MINOR 0
#define VXLIB4_VERSION_PATCH 0

/// A version as one number that can be compared: 40102 is 4.1.2.
#define VXLIB4_MAKE_VERSION(major, minor, patch) ((major)*10000 + (minor)*100 + (patch))
/// The version of these headers. `#if VXLIB4_VERSION >= VXLIB4_MAKE_VERSION(4, 1, 0)` asks for a newer one.
#define VXLIB4_VERSION VXLIB4_MAKE_VERSION(VXLIB4_VERSION_MAJOR, VXLIB4_VERSION_MINOR, VXLIB4_VERSION_PATCH)

#ifdef __cplusplus
extern "C" {
#endif

/// The version of the library that is loaded, as a number.
VX_API uint32_t VXLIBGetVersion(void);
/// The same as text, "4.1.2" for example.
VX_API const char* VXLIBGetVersionText(void);

#ifdef __cplusplus
}
#endif
