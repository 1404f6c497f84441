#pragma once

#include <vx/String.h>
#include <vx/vorb/Component.h>

#include <cstdint>

// Shared by the component libraries.

namespace vx::components {

/// The row of a class whose objects `make` creates.
template <auto make>
vorb::ClassData makerRow(const _GUID& classId, vorb::TextFunction progId, vorb::TextFunction description)
{
    return {&classId, vorb::createComponentBy<make>, vorb::createComponentFactory, progId, description,
        ComObject::GetComVersionIndependentProgID, nullptr};
}

/// A reference to the new `object`, which keeps the library of `module` loaded to the end of its life.
template <class T>
Reference<T> inModule(vorb::Module* module, T* object)
{
    object->SetComModule(module);
    return object;
}

/// The folder of the library that contains `address`. Throws Exception if the system does not know it.
String libraryFolder(const void* address);

} // namespace vx::components
