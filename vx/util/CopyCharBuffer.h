#pragma once

#include "vx/String.h"
#include "vx/util/ICharBuffer.h"

/// Copies the text of `source` to `target`, with a read lock on the source and a write lock on the target. A failure of
/// either buffer is thrown as ResultException, a null buffer as RESULT_POINTER; the target then keeps its length. If
/// both are `String`s, the terminator is copied too.
extern "C" VX_API void VXCopyCharBuffer(IVXCharBuffer* target, IVXCharBuffer* source);

namespace vx::util {

/// The same for a text that is not yet in an object, such as the result of a call.
inline void copyText(IVXCharBuffer* target, String text)
{
    VXCopyCharBuffer(target, &text);
}

} // namespace vx::util
