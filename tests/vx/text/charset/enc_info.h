#pragma once

#ifdef __cplusplus
extern "C" {
#endif

/// What of the flat functions is not as it should be, or null: they are used from C here.
const char* encInfoFault(void);

#ifdef __cplusplus
}
#endif
