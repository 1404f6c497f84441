#pragma once

#include "common/Messages.h"

#include <vx/Exception.h>

#include <cstdint>

namespace vxreg {

/// The description of a result of the store.
vxtools::Text textOfStore(std::int32_t result);
/// The description of a result of loading a component library.
vxtools::Text textOfLibrary(std::int32_t result);
/// The description of `failure`, or that of its result as one of the store.
vxtools::Text textOf(const vx::Exception& failure);

} // namespace vxreg
