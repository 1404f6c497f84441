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

/// The folder of the library that contains `address`. Throws Exception if the system does not know it.
String libraryFolder(const void* address);

} // namespace vx::components
