#pragma once

#include "vx/AnsiBytes.h"
#include "vx/Exception.h"
#include "vx/Result.h"
#include "vx/String.h"
#include "vx/detail/TextRange.h"
#include "vx/util/ROCharBuffer.h"
#include "vx/util/RWCharBuffer.h"

#include <algorithm>
#include <cstdint>
#include <exception>
#include <new>
#include <typeinfo>

namespace vx::detail {

/// Addresses are compared, which is fast; a type whose record exists twice is only slower.
template <class Exact, class Base>
bool isExactly(const Base& object) noexcept
{
    return &typeid(object) == &typeid(Exact);
}

/// The way around the component view for buffers whose exact type is known: their locks are empty and their operations
/// are fields, so that results do not change.
class PlainBuffer {
public:
    using Storage = util::BufferStorage<char16_t>;

    static bool isKnown(const IVXCharBuffer& buffer) noexcept
    {
        return isExactly<util::RWCharBuffer>(buffer) || isExactly<util::ROCharBuffer>(buffer);
    }

    /// The storage of exactly an RWCharBuffer; null for anything else.
    static Storage* storage(IVXCharBuffer& buffer) noexcept
    {
        return isExactly<util::RWCharBuffer>(buffer) ? &static_cast<util::RWCharBuffer&>(buffer).m_storage : nullptr;
    }

    /// Text and length of a known buffer; false for any other.
    static bool read(const IVXCharBuffer& buffer, const char16_t** data, int* length) noexcept
    {
        if (isExactly<util::RWCharBuffer>(buffer)) {
            const Storage& storage = static_cast<const util::RWCharBuffer&>(buffer).m_storage;
            *data = storage.data();
            *length = storage.length();
            return true;
        }
        if (isExactly<util::ROCharBuffer>(buffer)) {
            const auto& wrap = static_cast<const util::ROCharBuffer&>(buffer);
            *data = wrap.m_data;
            *length = wrap.m_length;
            return true;
        }
        return false;
    }

    /// As through the component view, where exhaustion is a result.
    static void ensure(Storage& storage, int minimum)
    {
        try {
            storage.ensure(minimum);
        } catch (const std::bad_alloc&) {
            throwResult(RESULT_OUT_OF_MEMORY);
        }
    }
};

/// A string's text under the read lock of its view, to the end of the block. Not counted: the string outlives the guard.
class [[nodiscard]] StringReadLock {
public:
    explicit StringReadLock(const String& text)
        : m_text(text)
    {
        if (isExactly<String>(text) && PlainBuffer::read(*text.m_buffer, &m_data, &m_length)) {
            m_length = std::max(m_length - 1, 0);
            return;
        }
        m_exceptionsAtStart = std::uncaught_exceptions();
        m_length = text.GetLength();
        throwIfFailed(text.GetReadLock(&m_data));
        m_isLocked = true;
        m_length = text.GetLength(); // a writer may have been at work until now
    }
    ~StringReadLock() noexcept(false)
    {
        if (!m_isLocked)
            return;
        const std::int32_t result = m_text.ReleaseReadLock();
        if (std::uncaught_exceptions() <= m_exceptionsAtStart)
            throwIfFailed(result);
    }
    StringReadLock(const StringReadLock&) = delete;
    StringReadLock& operator=(const StringReadLock&) = delete;

    const char16_t* data() const noexcept { return m_data; }
    int length() const noexcept { return m_length; }

private:
    const String& m_text;
    const char16_t* m_data = nullptr;
    int m_length = 0;
    int m_exceptionsAtStart = 0;
    bool m_isLocked = false;
};

/// A string's text under the write lock of its view. The length that `setLength` told last becomes the string's at the end
/// of the block, with a terminator behind it; without one it keeps the length it had.
class [[nodiscard]] StringWriteLock {
public:
    /// `expectedLength` makes a copy on write large enough at once.
    explicit StringWriteLock(String& text, int minimumLength = 0, int expectedLength = 0)
        : m_text(text)
    {
        if (isExactly<String>(text) && PlainBuffer::isKnown(*text.m_buffer)) {
            const int needed = withTerminator(std::max(minimumLength, 0));
            text.m_ansi = nullptr;
            text.copyOnWrite(std::max(needed, withTerminator(std::max(expectedLength, 0))));
            m_storage = PlainBuffer::storage(*text.m_buffer);
            PlainBuffer::ensure(*m_storage, needed);
            m_data = m_storage->data();
            m_length = std::max(m_storage->length() - 1, 0);
            return;
        }
        m_exceptionsAtStart = std::uncaught_exceptions();
        m_length = text.GetLength();
        throwIfFailed(text.GetWriteLock(minimumLength, &m_data));
        m_length = text.GetLength();
    }
    ~StringWriteLock() noexcept(false)
    {
        if (m_storage != nullptr) {
            m_data[m_length] = 0;
            m_storage->setLength(m_length + 1);
            return;
        }
        const std::int32_t result = m_text.ReleaseWriteLock(m_length);
        if (std::uncaught_exceptions() <= m_exceptionsAtStart)
            throwIfFailed(result);
    }
    StringWriteLock(const StringWriteLock&) = delete;
    StringWriteLock& operator=(const StringWriteLock&) = delete;

    char16_t* data() const noexcept { return m_data; }
    int length() const noexcept { return m_length; }
    /// Room was made for it before.
    void setLength(int length) noexcept { m_length = length; }
    /// Makes room; pointers taken before are invalid. A failure leaves the text as it was.
    void ensureCapacity(int minimumLength)
    {
        if (m_storage != nullptr) {
            PlainBuffer::ensure(*m_storage, withTerminator(minimumLength));
            m_data = m_storage->data();
            return;
        }
        char16_t* moved = nullptr;
        throwIfFailed(m_text.EnsureCapacity(minimumLength, &moved));
        m_data = moved;
    }

private:
    String& m_text;
    PlainBuffer::Storage* m_storage = nullptr;
    char16_t* m_data = nullptr;
    int m_length = 0;
    int m_exceptionsAtStart = 0;
};

} // namespace vx::detail
