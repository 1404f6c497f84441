#pragma once

#include "vx/Api.h"

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/// Starts the library: locale, new handler, global lock, classes and encodings. Calls are counted: only the first one
/// starts it, and each needs a call of the stop. The shared library starts itself when it is loaded. A program with the
/// static library calls this first. Negative is failure.
VX_API int32_t VXLIBLibInit(void);

/// Ends one start. The last one stops the library. Without a start it returns 0x80004005 and does nothing.
VX_API int32_t VXLIBLibUninit(void);

#ifdef __cplusplus
}
#endif
