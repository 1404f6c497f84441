#pragma once

#include "vx/IVXUnknown.h"
#include "vx/Reference.h"

namespace vx::collections::vorb {

/// One pass over the elements of a collection. If the collection is changed in another way than through the iterator,
/// the next step throws an Exception without a message.
class VX_API ConstIterator : public IVXUnknown {
public:
    virtual bool hasNext() = 0;
    /// At the end it throws Exception, for a list RangeErrorException.
    virtual Reference<IVXUnknown> next() = 0;

protected:
    ~ConstIterator() = default;
};

} // namespace vx::collections::vorb
