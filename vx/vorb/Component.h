#pragma once

#include "vx/Reference.h"
#include "vx/Result.h"
#include "vx/vorb/Boundary.h"
#include "vx/vorb/ClassData.h"
#include "vx/vorb/ClassFactory.h"
#include "vx/vorb/Module.h"
#include "vxsys/Component.h"

namespace vx::vorb {

/// An `InstanceCreator` for a class with a default constructor. An object keeps the library from its first count to its last.
template <class T>
std::int32_t createComponent(Module* module, IVXUnknown* outer, const _GUID& iid, void** out)
{
    if (outer != nullptr)
        return RESULT_NO_AGGREGATION;
    return resultAtBoundary([&] {
        auto* object = new T;
        object->SetComModule(module);
        const Reference<T> made(object);
        return object->QueryInterface(iid, out);
    });
}

/// A `FactoryCreator`. The factory does not keep the library: it gets its module behind its first count.
VX_API std::int32_t createComponentFactory(Module* module, InstanceCreator creator, const _GUID& iid, void** out);

/// The row of a module's table for a class with a default constructor. `classId` outlives it. A row without values ends the
/// table.
template <class T>
ClassData componentRow(const _GUID& classId)
{
    return {&classId, createComponent<T>, createComponentFactory, T::GetComProgID, T::GetComDescription,
        T::GetComVersionIndependentProgID, nullptr};
}

} // namespace vx::vorb

/// Exports what a component library is asked for, answered by `module`, an expression that gives its `DllModule`. Stands once
/// in the library, outside all namespaces.
#define VX_COMPONENT_LIBRARY(module)                                                                                   \
    extern "C" __attribute__((visibility("default"))) std::int32_t VXGetClassObject(                                   \
        const _GUID* classId, const _GUID* iid, void** factory)                                                        \
    {                                                                                                                  \
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
