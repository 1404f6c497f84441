#include "vx/detail/StringLocks.h"

#include "vx/Exception.h"
#include "vx/Result.h"

#include <exception>
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
    m_exceptionsAtStart = std::uncaught_exceptions();
    m_length = m_text.GetLength();
    throwIfFailed(m_text.GetReadLock(&m_data));
    m_isLocked = true;
    m_length = m_text.GetLength(); // a writer may have been at work until now
}

void StringReadLock::unlockView()
{
    const std::int32_t result = m_text.ReleaseReadLock();
    if (std::uncaught_exceptions() <= m_exceptionsAtStart)
        throwIfFailed(result);
}

void StringWriteLock::lockView(int minimumLength)
{
    m_exceptionsAtStart = std::uncaught_exceptions();
    m_length = m_text.GetLength();
    throwIfFailed(m_text.GetWriteLock(minimumLength, &m_data));
    m_length = m_text.GetLength();
}

void StringWriteLock::unlockView()
{
    const std::int32_t result = m_text.ReleaseWriteLock(m_length);
    if (std::uncaught_exceptions() <= m_exceptionsAtStart)
        throwIfFailed(result);
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
