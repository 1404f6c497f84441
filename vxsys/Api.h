#pragma once

/// Marks what the platform layer exports; everything else is hidden.
#if defined(__GNUC__)
#define VXSYS_API __attribute__((visibility("default")))
#else
#define VXSYS_API
#endif
