#pragma once

/// Marks what the library exports; everything else is hidden. Classes that are thrown or cast across libraries are
/// marked as a whole, so that each has only one type record.
#if defined(__GNUC__)
#define VX_API __attribute__((visibility("default")))
#else
#define VX_API
#endif
