#pragma once

#include "vx/Api.h"

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/// Starts the library: locale, new handler, global lock, classes, encodings. Counted: only the first call works, and each
/// wants a stop. The shared library starts itself when it is loaded; a program with the static library calls this first.
/// Negative is failure.
VX_API int32_t VXLIBLibInit(void);

/// Takes back one start; the last one frees what the first one made. Without a start it is 0x80004005 and does nothing.
VX_API int32_t VXLIBLibUninit(void);

#ifdef __cplusplus
}
#endif
