#include "vx/Library.h"
#include "vx/detail/OwnModule.h"
#include "vxsys/Component.h"

// Linked last into the shared library: this object is constructed after all other static objects of the library and
// destroyed before them, at load and unload and at exit. A failed start leaves a library that is loaded and half ready, since
// the loader has no way to report it.

namespace {

const char g_module = 0;

class Entry {
public:
    Entry() noexcept
    {
        vx::detail::setOwnModule(&g_module);
        VXLIBLibInit();
        VXModuleSetInitialized(&g_module, 1);
    }
    ~Entry()
    {
        VXModuleSetInitialized(&g_module, 0);
        VXLIBLibUninit();
    }
    Entry(const Entry&) = delete;
    Entry& operator=(const Entry&) = delete;
};

const Entry g_entry;

} // namespace
