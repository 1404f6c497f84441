#pragma once

/// Hides a private class or operation of an exported class. No user can call it, so it may change at any time.
#define VX_HIDDEN __attribute__((visibility("hidden")))
