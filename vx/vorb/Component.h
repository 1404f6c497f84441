#pragma once

#include "vx/Reference.h"
#include "vx/Result.h"
#include "vx/vorb/Boundary.h"
#include "vx/vorb/ClassData.h"
#include "vx/vorb/ClassFactory.h"
#include "vx/vorb/Module.h"
#include "vxsys/Component.h"

namespace vx::vorb {

/// An `InstanceCreator` whose objects `make` returns with a reference count of 0. An object keeps the library loaded
/// from its first reference to its last. There is no aggregation.
template <auto make>
std::int32_t createComponentBy(Module* module, IVXUnknown* outer, const _GUID& iid, void** out)
{
    if (out == nullptr)
        return RESULT_POINTER;
    *out = nullptr;
    if (outer != nullptr)
        return RESULT_NO_AGGREGATION;
    return resultAtBoundary([&] {
        auto* const object = make();
        object->SetComModule(module);
        const Reference<ComObject> made(object);
        return made->QueryInterface(iid, out);
    });
}

/// The same for a class with a default constructor.
template <class T>
std::int32_t createComponent(Module* module, IVXUnknown* outer, const _GUID& iid, void** out)
{
    return createComponentBy<[] { return new T; }>(module, outer, iid, out);
}

/// A `FactoryCreator`. The factory takes no lock on its module, so it does not keep the library loaded.
VX_API std::int32_t createComponentFactory(Module* module, InstanceCreator creator, const _GUID& iid, void** out);

/// The row of a module's table for a class with a default constructor. `classId` must outlive the row. A row of null
/// values ends the table.
template <class T>
ClassData componentRow(const _GUID& classId)
{
    return {&classId, createComponent<T>, createComponentFactory, T::GetComProgID, T::GetComDescription,
        T::GetComVersionIndependentProgID, nullptr};
}

} // namespace vx::vorb

/// Defines the functions that a component library exports. They call `module`, an expression that gives the library's
/// `DllModule`. Use it once in the library, outside all namespaces.
#define VX_COMPONENT_LIBRARY(module)                                                                                   \
    extern "C" __attribute__((visibility("default"))) std::int32_t VXGetClassObject(                                   \
        const _GUID* classId, const _GUID* iid, void** factory)                                                        \
    {                                                                                                                  \
        if (factory != nullptr)                                                                                        \
            *factory = nullptr;                                                                                        \
        if (classId == nullptr || iid == nullptr)                                                                      \
            return ::vx::RESULT_INVALID_ARGUMENT;                                                                      \
        return (module).GetClassObject(*classId, *iid, factory);                                                       \
    }                                                                                                                  \
    extern "C" __attribute__((visibility("default"))) std::int32_t VXCanUnloadNow()                                    \
    {                                                                                                                  \
        return (module).CanUnloadNow();                                                                                \
    }                                                                                                                  \
    extern "C" __attribute__((visibility("default"))) std::int32_t VXRegisterServer()                                  \
    {                                                                                                                  \
        return (module).RegisterServer(static_cast<const void*>(&(module)));                                           \
    }                                                                                                                  \
    extern "C" __attribute__((visibility("default"))) std::int32_t VXUnregisterServer()                                \
    {                                                                                                                  \
        return (module).UnregisterServer();                                                                            \
    }
