#pragma once

#include "vx/IVXUnknown.h"

namespace vx::vorb {

class Module;

/// Creates an object for a class factory and returns its interface `iid`. It sets the object's module before the first
/// reference.
using InstanceCreator = std::int32_t (*)(Module* module, IVXUnknown* outer, const _GUID& iid, void** out);
/// Creates a class factory with its module and its instance creator, and returns its interface `iid`.
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
