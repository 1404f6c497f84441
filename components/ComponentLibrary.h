#pragma once

#include <vx/Reference.h>
#include <vx/Result.h>
#include <vx/String.h>
#include <vx/vorb/Boundary.h>
#include <vx/vorb/ClassFactory.h>
#include <vx/vorb/Module.h>

#include <cstdint>

// What every component library here does: creators for the rows of its class table, and the functions that it exports.

namespace vx::components {

/// The instance creator of a row whose objects `make` makes, with count 0. There is no aggregation.
template <auto make>
std::int32_t createInstance(vorb::Module* module, IVXUnknown* outer, const _GUID& iid, void** out)
{
    *out = nullptr;
    if (outer != nullptr)
        return RESULT_NO_AGGREGATION;
    return vorb::resultAtBoundary([&] {
        auto* const object = make();
        object->SetComModule(module);
        const Reference<ComObject> made(object);
        return made->QueryInterface(iid, out);
    });
}

/// The factory creator of each row. The module is set behind the first count, so that a factory keeps no library.
inline std::int32_t createFactory(
    vorb::Module* module, vorb::InstanceCreator instanceCreator, const _GUID& iid, void** out)
{
    return vorb::resultAtBoundary([&] {
        const Reference<vorb::ClassFactory> factory(new vorb::ClassFactory);
        const std::int32_t result = factory->QueryInterface(iid, out);
        factory->SetComModule(module);
        factory->SetCreateInstanceQIFunc(instanceCreator);
        return result;
    });
}

/// For a row without such a text.
inline const char16_t* noText()
{
    return nullptr;
}

/// The folder of the library that `address` lies in. Throws Exception where the system does not tell.
String libraryFolder(const void* address);

/// Has `module` write the entries of its classes, with the path of the library that `address` lies in.
std::int32_t registerLibrary(vorb::Module& module, const void* address);

} // namespace vx::components

#define VX_COMPONENT_EXPORT extern "C" __attribute__((visibility("default")))

/// The exports of a component library over its one module, an expression that lasts as long as the library.
#define VX_COMPONENT_LIBRARY(module)                                                                                   \
    VX_COMPONENT_EXPORT std::int32_t VXGetClassObject(const _GUID* classId, const _GUID* iid, void** factory)          \
    {                                                                                                                  \
        if (classId == nullptr || iid == nullptr)                                                                      \
            return ::vx::RESULT_INVALID_ARGUMENT;                                                                      \
        return (module).GetClassObject(*classId, *iid, factory);                                                       \
    }                                                                                                                  \
    VX_COMPONENT_EXPORT std::int32_t VXCanUnloadNow()                                                                  \
    {                                                                                                                  \
        return (module).CanUnloadNow();                                                                                \
    }                                                                                                                  \
    VX_COMPONENT_EXPORT std::int32_t VXRegisterServer()                                                                \
    {                                                                                                                  \
        return ::vx::components::registerLibrary(module, reinterpret_cast<const void*>(&VXRegisterServer));            \
    }                                                                                                                  \
    VX_COMPONENT_EXPORT std::int32_t VXUnregisterServer()                                                              \
    {                                                                                                                  \
        return (module).UnregisterServer();                                                                            \
    }
