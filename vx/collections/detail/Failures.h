#pragma once

#include "vx/Exception.h"
#include "vx/Occasion.h"

namespace vx::collections::detail {

/// These throw an Exception without a description.
[[noreturn]] inline void throwChanged()
{
    throwDuring(u"iterate over", u"a collection that has changed meanwhile", Exception());
}

[[noreturn]] inline void throwAtEnd()
{
    throwDuring(u"get", u"an element past the end of a collection", Exception());
}

} // namespace vx::collections::detail
