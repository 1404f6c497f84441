#pragma once

#include "vx/Occasion.h"
#include "vx/Reference.h"
#include "vx/String.h"
#include "vx/TerminatedText.h"
#include "vxsys/Component.h"

namespace vx::vorb {

/// Creates an object of the class with this name, which is in a component library or offered by the program, and gives
/// its interface `Interface`. Throws ResultException with the code of `VXComCreateObjectByProgID`, such as
/// RESULT_CLASS_NOT_AVAILABLE for an unknown name; describe() names it.
template <ComponentInterface Interface>
Reference<Interface> createByProgId(const String& progId)
{
    return during(u"create an object of class", progId, [&] {
        Reference<Interface> object;
        throwIfFailed(VXComCreateObjectByProgID(SystemName(progId), nullptr, &Interface::IID, object.outVoid()));
        return object;
    });
}

} // namespace vx::vorb
