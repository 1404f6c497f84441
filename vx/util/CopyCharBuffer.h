#pragma once

#include "vx/util/ICharBuffer.h"

/// Makes the text of `source` that of `target`, under a write lock on the one and a read lock on the other. A failure of
/// either buffer is thrown as ResultException, a null one as RESULT_POINTER; the target then keeps its length. Where both
/// are `String`s, the target's terminator comes along.
extern "C" VX_API void VXCopyCharBuffer(IVXCharBuffer* target, IVXCharBuffer* source);
