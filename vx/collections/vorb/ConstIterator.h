#pragma once

#include "vx/IVXUnknown.h"
#include "vx/Reference.h"

namespace vx::collections::vorb {

/// One pass over the elements of a collection. A change of the collection behind the iterator is seen at the next step,
/// which throws an Exception without a message.
class VX_API ConstIterator : public IVXUnknown {
public:
    virtual bool hasNext() = 0;
    /// Throws Exception, of a list RangeErrorException, behind the last element.
    virtual Reference<IVXUnknown> next() = 0;

protected:
    ~ConstIterator() = default;
};

} // namespace vx::collections::vorb
