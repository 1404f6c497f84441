#pragma once

#include "vx/IVXUnknown.h"

namespace vx::vorb {

class Module;

/// Makes an object for a class factory and gives its interface `iid`. It hands the object the module before the first
/// count.
using InstanceCreator = std::int32_t (*)(Module* module, IVXUnknown* outer, const _GUID& iid, void** out);
/// Makes a class factory that has its module and its instance creator, and gives its interface `iid`.
using FactoryCreator = std::int32_t (*)(Module* module, InstanceCreator instanceCreator, const _GUID& iid, void** out);
/// A text about the class, or null.
using TextFunction = const char16_t* (*)();

/// One creatable class of a component library. The table is writable, since the module keeps its factories in it, and
/// ends with a row whose `classId` is null.
struct ClassData {
    const _GUID* classId;
    InstanceCreator instanceCreator;
    FactoryCreator factoryCreator;
    TextFunction progId;
    TextFunction description;
    TextFunction versionIndependentProgId;
    IVXUnknown* factory; ///< null until first used; owned by the module
};

} // namespace vx::vorb
