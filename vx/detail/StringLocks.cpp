#include "vx/detail/StringLocks.h"

#include "vx/Exception.h"
#include "vx/Result.h"

#include <new>

namespace vx::detail {

namespace {

/// As through the component view, where exhaustion is a result.
template <class Work>
void withResultOnExhaustion(Work work)
{
    try {
        work();
    } catch (const std::bad_alloc&) {
        throwResult(RESULT_OUT_OF_MEMORY);
    }
}

} // namespace

void StringReadLock::lockView()
{
    m_report = ReleaseReport();
    m_length = m_text.GetLength();
    throwIfFailed(m_text.GetReadLock(&m_data));
    m_isLocked = true;
    m_length = m_text.GetLength(); // a writer may have been at work until now
}

void StringReadLock::unlockView()
{
    m_report.tell(m_text.ReleaseReadLock());
}

void StringWriteLock::lockView(int minimumLength)
{
    m_report = ReleaseReport();
    m_length = m_text.GetLength();
    throwIfFailed(m_text.GetWriteLock(minimumLength, &m_data));
    m_length = m_text.GetLength();
}

void StringWriteLock::unlockView()
{
    m_report.tell(m_text.ReleaseWriteLock(m_length));
}

PlainBuffer::Storage* StringWriteLock::copyFirst(std::int64_t more)
{
    const std::int64_t length = std::min(m_text.getLength() + more, LONGEST_TEXT);
    withResultOnExhaustion([&] { m_text.copyOnWrite(withTerminator(length)); });
    return PlainBuffer::soleStorage(*m_text.m_buffer);
}

void StringWriteLock::grow(int needed)
{
    if (m_storage != nullptr) {
        withResultOnExhaustion([&] { m_storage->ensure(needed); });
        m_data = m_storage->data();
        return;
    }
    char16_t* moved = nullptr;
    throwIfFailed(m_text.EnsureCapacity(needed - 1, &moved));
    m_data = moved;
}

} // namespace vx::detail
