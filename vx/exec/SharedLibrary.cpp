#include "vx/exec/SharedLibrary.h"

#include "vx/Exception.h"
#include "vx/Occasion.h"
#include "vx/Result.h"
#include "vx/detail/OwnModule.h"

namespace vx::exec {

SharedLibrary::SharedLibrary(const char16_t* name)
{
    const std::int32_t result = VXModuleLibOpen(vx::detail::getOwnModule(), name, &m_handle);
    if (failed(result))
        throwDuring(u"open", name, ResultException(result, u"Failed to open shared library."));
}

SharedLibrary::~SharedLibrary() noexcept
{
    if (m_handle != VX_LIB_INVALID_HANDLE)
        VXModuleLibClose(vx::detail::getOwnModule(), m_handle);
}

void* SharedLibrary::getSymbol(const char16_t* name)
{
    void* symbol = nullptr;
    const std::int32_t result = VXLibGetSymbol(m_handle, name, &symbol);
    if (failed(result))
        throwDuring(u"find", name, ResultException(result, u"Failed to get symbol."));
    return symbol;
}

} // namespace vx::exec
