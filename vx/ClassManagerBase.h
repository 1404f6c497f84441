#pragma once

#include "vx/Class.h"
#include "vx/GlobalLock.h"
#include "vx/util/Singleton.h"

#include <memory>
#include <typeinfo>

namespace vx {

/// The registry of classes, by name and by type. It owns the records. No lock guards it: it is filled at the start of the
/// library and only read afterwards. A program that registers or unregisters a class later does so while no other thread
/// looks one up.
class VX_API ClassManagerBase {
public:
    ClassManagerBase();
    ClassManagerBase(const ClassManagerBase&) = delete;
    ClassManagerBase& operator=(const ClassManagerBase&) = delete;
    ~ClassManagerBase();

    /// The first registration of a name stands, a second one does nothing. Neither `name` nor `type` is copied: both must
    /// outlive the registration. Throws ResultException RESULT_INVALID_ARGUMENT if either is null.
    void registerClass(const char16_t* name, const std::type_info* type, ObjectCreator creator);
    /// Destroys the record of `name`. Does nothing if there is none.
    void unregisterClass(const char16_t* name) noexcept;
    /// Throws ClassNotFoundException with the name.
    const Class* lookupName(const char16_t* name);
    /// Throws ClassNotFoundException with the readable name of the type.
    const Class* lookupType(const std::type_info* type);

private:
    friend class ClassRegistration;
    class Impl;

    /// The new record; null if the name is taken.
    const Class* tryRegister(const char16_t* name, const std::type_info* type, ObjectCreator creator);
    /// The record of `name`, or null.
    const Class* find(const char16_t* name) const noexcept;

    std::unique_ptr<Impl> m_impl;
};

extern template class VX_API util::Singleton<ClassManagerBase, &g_pGlobalLock>;

/// The registry that `Class` and `Object` ask, one in the process. It exists from the start of the library to its stop.
using ClassManager = util::Singleton<ClassManagerBase, &g_pGlobalLock>;

/// Registers a class for as long as this object lives. A component that is unloaded while the process runs keeps one for
/// each of its classes in a static object, so that no record points into its memory afterwards.
///
///     const vx::ClassRegistration g_greeter(u"example::Greeter", &typeid(Greeter), create);
///
/// If the name is taken, the first registration stands, and this object changes nothing. Nothing is thrown: a static object
/// has no caller that could handle an exception, and the process would end.
class VX_API ClassRegistration {
public:
    /// As `ClassManagerBase::registerClass`. The class stays unknown if `name` or `type` is null, memory is exhausted or the
    /// library is stopped.
    ClassRegistration(const char16_t* name, const std::type_info* type, ObjectCreator creator) noexcept;
    ClassRegistration(const ClassRegistration&) = delete;
    ClassRegistration& operator=(const ClassRegistration&) = delete;
    ~ClassRegistration();

    /// Whether this object made the class known.
    bool isRegistered() const noexcept { return m_record != nullptr; }

private:
    const char16_t* m_name;
    const Class* m_record = nullptr;
};

} // namespace vx
