#pragma once

#include "common/Messages.h"

#include <vx/Exception.h>

#include <cstdint>

namespace vxreg {

/// The description of a result of the store.
vxtools::Text textOfStore(std::int32_t result);
/// The same where something was to be added. If the folder of the registry cannot be made, that is told instead.
vxtools::Text textOfAddition(std::int32_t result);
vxtools::Text textOfAddition(const vx::Exception& failure);
/// The description of a result of loading a component library.
vxtools::Text textOfLibrary(std::int32_t result);
/// The description of `failure`, or that of its result as one of the store.
vxtools::Text textOf(const vx::Exception& failure);

} // namespace vxreg
