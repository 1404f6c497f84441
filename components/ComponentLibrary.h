#pragma once

#include <vx/String.h>
#include <vx/vorb/Component.h>

#include <cstdint>

// What the component libraries here share.

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

/// The row of a class whose objects `make` makes.
template <auto make>
vorb::ClassData makerRow(const _GUID& classId, vorb::TextFunction progId, vorb::TextFunction description)
{
    return {&classId, createInstance<make>, vorb::createComponentFactory, progId, description,
        ComObject::GetComVersionIndependentProgID, nullptr};
}

/// The folder of the library that `address` lies in. Throws Exception where the system does not tell.
String libraryFolder(const void* address);

} // namespace vx::components
