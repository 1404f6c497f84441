#include "vx/detail/StringLocks.h"

#include "vx/Exception.h"
#include "vx/Result.h"
#include "vxsys/Memory.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <new>
#include <string_view>
#include <tuple>
#include <utility>

namespace vx::detail {

namespace {

/// The units, with the terminator, that a text which begins to grow has memory for: most lines are no longer.
constexpr int LEAST_ROOM = 80;

/// As the component view, which returns exhausted memory as a result.
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

util::RWCharBuffer* PlainBuffer::makeLong(int capacity)
{
    return new util::RWCharBuffer(capacity);
}

Reference<IVXCharBuffer> PlainBuffer::copyOfLong(const char16_t* text, int length, int capacity)
{
    length = std::max(length, 0);
    util::RWCharBuffer* buffer = make(std::max(capacity, withTerminator(length)));
    Reference<IVXCharBuffer> copy = own(buffer);
    Storage& storage = buffer->m_storage;
    moveUnits(storage.data(), text, static_cast<std::size_t>(length));
    storage.data()[length] = 0;
    storage.setLength(length + 1);
    return copy;
}

bool PlainBuffer::beginShort(String& text, const char16_t* first, int count)
{
    if (!isExactly<String>(text) || !isExactly<EmptyBuffer>(*text.m_buffer))
        return false;
    withResultOnExhaustion([&] {
        const int needed = count + 1;
        const int room = std::clamp(2 * needed, LEAST_ROOM, Storage::MOST_FOLLOWING);
        util::RWCharBuffer* buffer = makeShort(room, needed, needed);
        char16_t* const units = buffer->m_storage.following();
        moveShort(units, first, static_cast<std::size_t>(count));
        units[count] = 0;
        text.m_ansi = nullptr;
        std::ignore = text.m_buffer.detach(); // it counts nothing
        text.m_buffer.attach(PlainBuffer::own(buffer).detach());
    });
    return true;
}

bool PlainBuffer::appendToCopy(String& text, const char16_t* more, int count)
{
    std::u16string_view own;
    if (count < 1 || !readExact(text, &own) || soleStorage(*text.m_buffer) != nullptr)
        return false;
    const std::int64_t length = static_cast<std::int64_t>(own.size()) + count;
    if (length > LONGEST_TEXT)
        return false;
    withResultOnExhaustion([&] {
        const auto needed = static_cast<int>(length) + 1;
        util::RWCharBuffer* both = nullptr;
        if (needed <= Storage::MOST_FOLLOWING) {
            const int twice = std::min(2 * needed, Storage::MOST_FOLLOWING);
            both = makeShort(std::max(twice, LEAST_ROOM), needed, needed);
        } else {
            both = makeLong(needed);
            both->m_storage.setLength(needed);
        }
        char16_t* const units = both->m_storage.data();
        moveUnits(units, own.data(), own.size());
        moveUnits(units + own.size(), more, static_cast<std::size_t>(count));
        units[length] = 0;
        text.m_ansi = nullptr;
        release(text.m_buffer);
        text.m_buffer.attach(PlainBuffer::own(both).detach());
    });
    return true;
}

void StringReadLock::lockView()
{
    m_report = ReleaseReport();
    m_length = m_text.GetLength();
    throwIfFailed(m_text.GetReadLock(&m_data));
    m_isLocked = true;
    m_length = m_text.GetLength(); // a writer may have changed it until the lock was granted
}

void StringReadLock::unlockView()
{
    m_report.report(m_text.ReleaseReadLock());
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
    m_report.report(m_text.ReleaseWriteLock(m_length));
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
