#include "vx/detail/TypeName.h"

#include <cstdlib>
#include <cxxabi.h>
#include <memory>

namespace vx::detail {

String readableName(const std::type_info& type)
{
    int status = 0;
    const std::unique_ptr<char, decltype(&std::free)> name(
        abi::__cxa_demangle(type.name(), nullptr, nullptr, &status), &std::free);
    return String(name != nullptr ? name.get() : type.name());
}

} // namespace vx::detail
