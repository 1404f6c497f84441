#pragma once

namespace vx {
class ClassManagerBase;
}

namespace vx::startup::detail {

/// Registers every class that the library knows by name.
void registerClasses(ClassManagerBase& manager);

} // namespace vx::startup::detail
