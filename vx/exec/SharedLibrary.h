#pragma once

#include "vx/Object.h"
#include "vxsys/Module.h"

namespace vx::exec {

/// A shared library of the system, loaded until the object is destroyed. Do not use its symbols after that.
class VX_API SharedLibrary : public Object {
public:
    /// A `name` with a separator or a drive is a path; any other name is looked up by the system's loader. Throws
    /// ResultException "Failed to open shared library.".
    explicit SharedLibrary(const char16_t* name);
    SharedLibrary(const SharedLibrary&) = delete;
    SharedLibrary& operator=(const SharedLibrary&) = delete;
    ~SharedLibrary() noexcept override;

    /// The address of an exported symbol. Throws ResultException "Failed to get symbol.".
    void* getSymbol(const char16_t* name);

private:
    VXLibHandle m_handle = VX_LIB_INVALID_HANDLE;
};

} // namespace vx::exec
