#include "vx/util/CopyCharBuffer.h"

#include "vx/Result.h"
#include "vx/util/BufferLocks.h"

#include <algorithm>

void VXCopyCharBuffer(IVXCharBuffer* target, IVXCharBuffer* source)
{
    if (target == nullptr || source == nullptr)
        vx::throwResult(vx::RESULT_POINTER);
    if (target == source) // holds its text already, and may not be read and written at once
        return;

    const int length = std::max(source->GetLength(), 0);
    vx::util::CharWriteLock written(*target, length);
    {
        const vx::util::CharReadLock read(*source);
        // A writer may have been at the source since; its new text is not longer here than what there is room for.
        written.setLength(std::min(length, read.length()));
        std::copy_n(read.data(), written.length(), written.data());
    }
}
