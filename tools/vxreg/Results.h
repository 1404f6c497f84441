#pragma once

#include <vx/Exception.h>

#include <cstdint>
#include <string>

namespace vxreg {

/// The description of a result of the store.
std::string textOfStore(std::int32_t result);
/// The description of a result of loading a component library.
std::string textOfLibrary(std::int32_t result);
/// The description of `failure`, or that of its result as one of the store.
std::string textOf(const vx::Exception& failure);

} // namespace vxreg
