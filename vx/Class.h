#pragma once

#include "vx/Object.h"

#include <typeinfo>

namespace vx {

/// Creates an object with count 0.
using ObjectCreator = Object* (*)();

/// The run-time record of a class: its name, its type and, for many, a way to be created by name. The registry owns the
/// records (vx/ClassManagerBase.h). Pointers to them add no reference; they are valid until the library stops or the class
/// is unregistered.
class VX_API Class : public Object {
public:
    /// `name` and `type` are not copied and outlive the record. A null `creator` means that the class cannot be created by
    /// name. A null `type` has no instances.
    Class(const char16_t* name, const std::type_info* type, ObjectCreator creator) noexcept;
    ~Class() noexcept override;

    /// The registered name, for example "CVXString", not the name of the C++ class.
    virtual const char16_t* getName() const;
    /// True only for this exact type, not for a derived class.
    virtual bool isInstance(const Object& object) const;
    /// A new object with count 0. Throws IllegalAccessException for a class without a creator.
    virtual Object* createInstance() const;

    /// Throws ClassNotFoundException with the name. Names are case-sensitive.
    static const Class* forName(const char16_t* name);
    /// Throws ClassNotFoundException with the readable name of the type.
    static const Class* forType(const std::type_info* type);

private:
    const char16_t* m_name;
    const std::type_info* m_type;
    ObjectCreator m_creator;
};

} // namespace vx
