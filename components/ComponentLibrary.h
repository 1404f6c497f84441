#pragma once

#include <vx/String.h>
#include <vx/vorb/Component.h>

#include <cstdint>

// What the component libraries here share.

namespace vx::components {

/// The row of a class whose objects `make` makes.
template <auto make>
vorb::ClassData makerRow(const _GUID& classId, vorb::TextFunction progId, vorb::TextFunction description)
{
    return {&classId, vorb::createComponentBy<make>, vorb::createComponentFactory, progId, description,
        ComObject::GetComVersionIndependentProgID, nullptr};
}

/// The folder of the library that `address` lies in. Throws Exception where the system does not tell.
String libraryFolder(const void* address);

} // namespace vx::components
