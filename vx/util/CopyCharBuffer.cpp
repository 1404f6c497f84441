#include "vx/util/CopyCharBuffer.h"

#include "vx/Result.h"
#include "vx/util/BufferLocks.h"

#include <algorithm>

void VXCopyCharBuffer(IVXCharBuffer* target, IVXCharBuffer* source)
{
    if (target == nullptr || source == nullptr)
        vx::throwResult(vx::RESULT_POINTER);
    if (target == source) // it has its text already, and may not be locked twice
        return;

    const int length = std::max(source->GetLength(), 0);
    vx::util::CharWriteLock written(*target, length);
    {
        const vx::util::CharReadLock read(*source);
        // Another writer may have changed the source since then. Only as much of its new text is copied as there is
        // room for.
        written.setLength(std::min(length, read.length()));
        std::copy_n(read.data(), written.length(), written.data());
    }
}
