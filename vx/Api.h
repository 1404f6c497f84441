#pragma once

/// Marks what the library exports; everything else stays hidden. Classes that are thrown or cast across libraries carry
/// it as a whole, so that their type information is one.
#if defined(__GNUC__)
#define VX_API __attribute__((visibility("default")))
#else
#define VX_API
#endif
