#pragma once

#include "vx/AnsiBytes.h"
#include "vx/String.h"
#include "vx/detail/ReleaseReport.h"
#include "vx/detail/TextRange.h"
#include "vx/util/ROCharBuffer.h"
#include "vx/util/RWCharBuffer.h"
#include "vxsys/Memory.h"

#include <algorithm>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>
#include <tuple>
#include <typeinfo>
#include <utility>

namespace vx::detail {

/// Addresses are compared, which is fast; a type whose record exists twice is only slower.
template <class Exact, class Base>
bool isExactly(const Base& object) noexcept
{
    return &typeid(object) == &typeid(Exact);
}

/// Direct access, past the component view, to buffers whose exact type is known. Their locks do nothing and their operations
/// read fields, so the results are the same.
class PlainBuffer {
public:
    using Storage = util::detail::BufferStorage<char16_t>;

    static bool isKnown(const IVXCharBuffer& buffer) noexcept
    {
        return isExactly<util::RWCharBuffer>(buffer) || isExactly<util::ROCharBuffer>(buffer);
    }

    /// The count of a known buffer, without a virtual call; null for any other.
    static const ComObject* countOf(const IVXCharBuffer& buffer) noexcept
    {
        if (isExactly<util::RWCharBuffer>(buffer))
            return &static_cast<const util::RWCharBuffer&>(buffer);
        return isExactly<util::ROCharBuffer>(buffer) ? &static_cast<const util::ROCharBuffer&>(buffer) : nullptr;
    }

    /// The storage of an RWCharBuffer (exactly that class) to which only one string refers; null for anything else.
    static Storage* soleStorage(IVXCharBuffer& buffer) noexcept
    {
        if (!isExactly<util::RWCharBuffer>(buffer))
            return nullptr;
        auto& own = static_cast<util::RWCharBuffer&>(buffer);
        return own.GetRefCount() < 2 ? &own.m_storage : nullptr;
    }

    /// The storage of a string that may write to it and has nothing else to change; null for anything else.
    static Storage* writableStorage(String& text) noexcept
    {
        return isExactly<String>(text) && text.m_ansi == nullptr ? soleStorage(*text.m_buffer) : nullptr;
    }

    /// Makes the text `more` units longer and returns the place where the caller writes them. Null, and no change, where
    /// that would take a copy or new storage.
    static char16_t* extend(String& text, int more) noexcept
    {
        Storage* storage = writableStorage(text);
        if (storage == nullptr || more < 1)
            return nullptr;
        const int length = std::max(storage->length(), 1);
        if (!storage->ensureWithin(std::int64_t {length} + more))
            return nullptr;
        storage->setLength(length + more);
        char16_t* place = storage->data() + (length - 1);
        place[more] = 0;
        return place;
    }

    /// Appends one unit within the capacity. False, and no change, where that would take more.
    static bool push(String& text, char16_t unit) noexcept
    {
        Storage* storage = writableStorage(text);
        if (storage == nullptr)
            return false;
        const int length = storage->length();
        if (length < 1 || length >= storage->capacity())
            return false;
        char16_t* const end = storage->data() + length;
        end[-1] = unit;
        end[0] = 0;
        storage->setLength(length + 1);
        return true;
    }

    /// Appends to a text whose buffer is shared or read-only, by a new buffer with room for both parts. `more` may lie in the
    /// old one. False, and no change, for any other text.
    static bool appendToCopy(String& text, const char16_t* more, int count);

    /// Makes `text` the units of `source`, which may lie in its own storage. False, and no change, where that would take a
    /// copy or new storage.
    static bool overwrite(String& text, const char16_t* source, int length) noexcept
    {
        Storage* storage = writableStorage(text);
        if (storage == nullptr || !storage->ensureWithin(std::int64_t {length} + 1))
            return false;
        if (length > 0)
            std::memmove(storage->data(), source, static_cast<std::size_t>(length) * sizeof(char16_t));
        storage->data()[length] = 0;
        storage->setLength(length + 1);
        return true;
    }

    /// Puts `insert` units, those of `text` or without one copies of `fill`, in place of a range. `text` lies outside the
    /// string's storage. False, and no change, where that would take a copy or new storage.
    static bool splice(
        String& target, int start, int count, const char16_t* text, std::int64_t insert, char16_t fill) noexcept
    {
        Storage* storage = writableStorage(target);
        if (storage == nullptr || storage->length() < 1)
            return false;
        const int length = storage->length() - 1;
        start = clipped(start, length);
        count = clipped(count, length - start);
        const std::int64_t newLength = length + insert - count;
        if (!storage->ensureWithin(newLength + 1))
            return false;
        char16_t* const place = storage->data() + start;
        if (insert != count) {
            std::memmove(
                place + insert, place + count, static_cast<std::size_t>(length - start - count) * sizeof(char16_t));
        }
        if (text != nullptr)
            std::memcpy(place, text, static_cast<std::size_t>(insert) * sizeof(char16_t));
        else
            std::fill_n(place, insert, fill);
        storage->data()[newLength] = 0;
        storage->setLength(static_cast<int>(newLength) + 1);
        return true;
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
            *data = wrap.m_storage.data();
            *length = wrap.m_storage.length();
            return true;
        }
        return false;
    }

    /// The same of a string's buffer.
    static bool read(const String& text, std::u16string_view* units) noexcept
    {
        const char16_t* data = nullptr;
        int length = 0;
        if (!read(*text.m_buffer, &data, &length))
            return false;
        *units = {data, static_cast<std::size_t>(std::max(length - 1, 0))};
        return true;
    }

    /// The same of a string that is of no derived class.
    static bool readExact(const String& text, std::u16string_view* units) noexcept
    {
        return isExactly<String>(text) && read(text, units);
    }

    /// The text where a zero unit is known to end it, else null. That is known of a string's own storage only: the unit
    /// after wrapped text belongs to the owner of that text, and reading it may be an error.
    static const char16_t* terminated(const String& text) noexcept
    {
        if (!isExactly<String>(text) || !isExactly<util::RWCharBuffer>(*text.m_buffer))
            return nullptr;
        const Storage& storage = static_cast<const util::RWCharBuffer&>(*text.m_buffer).m_storage;
        const int length = storage.length();
        return length > 0 && storage.data()[length - 1] == 0 ? storage.data() : nullptr;
    }

    /// A new buffer with count 0 and without text.
    static util::RWCharBuffer* make(int capacity);

    /// The first reference to a new buffer, which only the caller knows.
    template <class Buffer>
    static Reference<IVXCharBuffer> own(Buffer* fresh) noexcept
    {
        Reference<IVXCharBuffer> first;
        fresh->setFirstReference();
        first.attach(fresh);
        return first;
    }

    /// One more reference to a string's buffer.
    static Reference<IVXCharBuffer> share(const Reference<IVXCharBuffer>& buffer) noexcept
    {
        if (const ComObject* object = countOf(*buffer)) {
            object->ComObject::AddRef();
            Reference<IVXCharBuffer> more;
            more.attach(buffer.get());
            return more;
        }
        return buffer;
    }

    /// Releases a string's buffer. The last reference to an RWCharBuffer (exactly that class) cannot come back, so that the
    /// buffer is destroyed without a change of its count.
    static void release(Reference<IVXCharBuffer>& buffer) noexcept
    {
        if (buffer == nullptr)
            return;
        if (isExactly<util::RWCharBuffer>(*buffer)) {
            auto& own = static_cast<util::RWCharBuffer&>(*buffer);
            if (own.GetRefCount() == 1 && own.GetComModule() == nullptr) {
                std::ignore = buffer.detach();
                if (!own.m_storage.isBorrowed()) // else its destructor has nothing to do
                    own.util::RWCharBuffer::~RWCharBuffer();
                vxsys::deallocate(&own);
                return;
            }
        }
        if (const ComObject* object = countOf(*buffer)) {
            std::ignore = buffer.detach();
            object->ComObject::Release();
        }
    }

    /// Gives back the room after the text, apart from that for `least` units in all.
    static void releaseExtra(util::RWCharBuffer& buffer, int least) noexcept { buffer.m_storage.releaseExtra(least); }

    /// A new buffer with the text that `fill` writes to the array that it is given, of at most `longest` units; `fill` returns
    /// how many. The capacity is that of a copy of the text.
    template <std::invocable<char16_t*> Fill>
    static Reference<IVXCharBuffer> filled(int longest, int capacity, Fill fill)
    {
        util::RWCharBuffer* buffer = make(std::max(capacity, withTerminator(longest)));
        Reference<IVXCharBuffer> first = own(buffer);
        Storage& storage = buffer->m_storage;
        const int length = fill(storage.data());
        storage.data()[length] = 0;
        storage.setLength(length + 1);
        storage.releaseExtra(capacity);
        return first;
    }

    /// A new buffer that holds `length` units and the terminator, in room for no less than `capacity`.
    static Reference<IVXCharBuffer> copyOf(const char16_t* text, int length, int capacity = 0)
    {
        util::RWCharBuffer* buffer = make(std::max(capacity, withTerminator(length)));
        Storage& storage = buffer->m_storage;
        if (length > 0)
            std::memcpy(storage.data(), text, static_cast<std::size_t>(length) * sizeof(char16_t));
        storage.data()[length] = 0;
        storage.setLength(length + 1);
        return own(buffer);
    }
};

/// A string's text under the read lock of its view, to the end of the block. Adds no reference: the string must outlive it.
class [[nodiscard]] StringReadLock {
public:
    explicit StringReadLock(const String& text)
        : m_text(text)
    {
        if (isExactly<String>(text) && PlainBuffer::read(*text.m_buffer, &m_data, &m_length))
            m_length = std::max(m_length - 1, 0);
        else
            lockView();
    }
    ~StringReadLock() noexcept(false)
    {
        if (m_isLocked)
            unlockView();
    }
    StringReadLock(const StringReadLock&) = delete;
    StringReadLock& operator=(const StringReadLock&) = delete;

    const char16_t* data() const noexcept { return m_data; }
    int length() const noexcept { return m_length; }

private:
    void lockView();
    void unlockView();

    const String& m_text;
    const char16_t* m_data = nullptr;
    int m_length = 0;
    ReleaseReport m_report = ReleaseReport::ofDestructor(); ///< of the time of the lock, once there is one
    bool m_isLocked = false;
};

/// The text of `source` for an operation on `target`. It is a copy where both use one buffer that has a real lock: the read
/// lock of the source would block the write to the target for ever, and so would a second read lock while a writer waits.
class [[nodiscard]] StringSource {
public:
    StringSource(const String& target, const String& source)
        : m_lock(source.m_buffer == target.m_buffer && !PlainBuffer::isKnown(*source.m_buffer)
                ? m_copy.emplace(String::AcquireCopy, source)
                : source)
    {
    }

    const char16_t* data() const noexcept { return m_lock.data(); }
    int length() const noexcept { return m_lock.length(); }

private:
    std::optional<String> m_copy;
    StringReadLock m_lock;
};

/// A string's text under the write lock of its view. At the end of the block, the last `setLength` becomes the length of the
/// string, and the terminator is written; without a `setLength` the length stays.
class [[nodiscard]] StringWriteLock {
public:
    explicit StringWriteLock(String& text, int minimumLength = 0)
        : StringWriteLock(text, minimumLength, [](int) { return 0; })
    {
    }
    /// A copy on write gets room for `more(length)` units after the text of that length, in one allocation.
    template <std::invocable<int> More>
    StringWriteLock(String& text, int minimumLength, More more)
        : m_text(text)
    {
        if (isExactly<String>(text)) {
            m_storage = PlainBuffer::soleStorage(*text.m_buffer);
            if (m_storage == nullptr && PlainBuffer::isKnown(*text.m_buffer))
                m_storage = copyFirst(more(text.String::getLength()));
        }
        if (m_storage == nullptr) {
            lockView(minimumLength);
            return;
        }
        text.m_ansi = nullptr;
        m_length = std::max(m_storage->length() - 1, 0);
        ensureCapacity(minimumLength);
    }
    ~StringWriteLock() noexcept(false)
    {
        if (m_storage == nullptr) {
            unlockView();
            return;
        }
        m_data[m_length] = 0;
        m_storage->setLength(m_length + 1);
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
        const int needed = withTerminator(std::max(minimumLength, 0));
        if (m_storage == nullptr || m_storage->capacity() < needed)
            grow(needed);
        else
            m_data = m_storage->data();
    }

private:
    void lockView(int minimumLength);
    void unlockView();
    PlainBuffer::Storage* copyFirst(std::int64_t more);
    void grow(int needed);

    String& m_text;
    PlainBuffer::Storage* m_storage = nullptr;
    char16_t* m_data = nullptr;
    int m_length = 0;
    ReleaseReport m_report = ReleaseReport::ofDestructor(); ///< of the time of the lock, once there is one
};

} // namespace vx::detail
