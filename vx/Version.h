#pragma once

#include "vx/Api.h"

#include <stdint.h>

// The build takes the version of the project from these three lines.
#define VXLIB4_VERSION_MAJOR 4
#define VXLIB4_VERSION_MINOR 0
#define VXLIB4_VERSION_PATCH 0

/// The version of these headers as one number, such as 40102 for 4.1.2.
#define VXLIB4_VERSION (VXLIB4_VERSION_MAJOR * 10000 + VXLIB4_VERSION_MINOR * 100 + VXLIB4_VERSION_PATCH)

#ifdef __cplusplus
extern "C" {
#endif

/// The version of the library that the process has loaded. It is never below the `VXLIB4_VERSION` that a program was
/// compiled with, unless an older library was installed over a newer one.
VX_API int32_t VXLIBLibVersion(void);

#ifdef __cplusplus
}
#endif
