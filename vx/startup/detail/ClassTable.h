#pragma once

namespace vx {
class ClassManagerBase;
}

namespace vx::startup::detail {

/// Registers all classes that can be found by name.
void registerClasses(ClassManagerBase& manager);

} // namespace vx::startup::detail
