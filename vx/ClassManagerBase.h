#pragma once

#include "vx/Class.h"

#include <memory>
#include <typeinfo>

namespace vx {

/// The registry of classes, by name and by type. It owns the records. Filled at the start of the library and read without
/// a lock afterwards: whoever registers a class later does so while no other thread looks one up.
class VX_API ClassManagerBase {
public:
    ClassManagerBase();
    ClassManagerBase(const ClassManagerBase&) = delete;
    ClassManagerBase& operator=(const ClassManagerBase&) = delete;
    ~ClassManagerBase();

    /// The first registration of a name stands; another one of it does nothing. `name` outlives the registry.
    void registerClass(const char16_t* name, const std::type_info* type, ObjectCreator creator);
    /// Throws ClassNotFoundException with the name.
    const Class* lookupName(const char16_t* name);
    /// Throws ClassNotFoundException with the readable name of the type.
    const Class* lookupType(const std::type_info* type);

private:
    class Impl;

    std::unique_ptr<Impl> m_impl;
};

} // namespace vx
