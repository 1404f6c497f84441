#pragma once

#include <vx/Exception.h>

#include <cstdint>
#include <string>

namespace vxreg {

/// What a result of the store means.
std::string textOfStore(std::int32_t result);
/// What a result of the loading of a component library means.
std::string textOfLibrary(std::int32_t result);
/// The description of `failure`, or what its result means for the store.
std::string textOf(const vx::Exception& failure);

} // namespace vxreg
