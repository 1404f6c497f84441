#include "vx/Library.h"
#include "vx/detail/OwnModule.h"
#include "vxsys/Component.h"

// Linked last into the shared library: this object is constructed after all other static objects of the library and
// destroyed before them, when the library is loaded or unloaded and when the process exits. If the start fails, the
// library stays loaded and only partly initialised, since the loader has no way to report the failure.

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
