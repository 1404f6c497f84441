#include "vx/detail/StringLocks.h"

#include "vx/Exception.h"
#include "vx/Result.h"
#include "vxsys/Memory.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <new>
#include <string_view>
#include <utility>

namespace vx::detail {

namespace {

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

util::RWCharBuffer* PlainBuffer::make(int capacity)
{
    if (capacity < 1 || capacity > Storage::MOST_BEHIND)
        return new util::RWCharBuffer(capacity);
    const auto units = static_cast<int>(Storage::adjust(capacity));
    auto* memory = static_cast<std::byte*>(
        vxsys::allocate(sizeof(util::RWCharBuffer) + static_cast<std::size_t>(units) * sizeof(char16_t)));
    auto* place = reinterpret_cast<char16_t*>(memory + sizeof(util::RWCharBuffer));
    return new (memory) util::RWCharBuffer(util::RWCharBuffer::Placed(), place, units);
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
        Reference<IVXCharBuffer> both = filled(static_cast<int>(length), 0, [&](char16_t* out) {
            std::copy_n(more, count, std::copy(own.begin(), own.end(), out));
            return static_cast<int>(length);
        });
        text.m_ansi = nullptr;
        release(text.m_buffer);
        text.m_buffer = std::move(both);
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
