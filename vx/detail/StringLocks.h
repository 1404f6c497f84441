#pragma once

#include "vx/AnsiBytes.h"
#include "vx/String.h"
#include "vx/detail/ExactType.h"
#include "vx/detail/ReleaseReport.h"
#include "vx/detail/TextCopy.h"
#include "vx/detail/TextRange.h"
#include "vx/util/ROCharBuffer.h"
#include "vx/util/RWCharBuffer.h"
#include "vxsys/Memory.h"

#include <algorithm>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <functional>
#include <limits>
#include <optional>
#include <tuple>
#include <utility>

namespace vx::detail {

/// The buffer that empty strings share. It counts no references: it always exists, and all threads would write to the
/// count.
class EmptyBuffer final : public util::ROCharBuffer {
public:
    EmptyBuffer() noexcept
        : ROCharBuffer(u"", 1)
    {
    }

    std::uint32_t AddRef() const override { return SHARED; }
    std::uint32_t Release() const override { return SHARED; }

private:
    static constexpr std::uint32_t SHARED = 2; ///< never the only holder
};

/// Direct access, past the component view, to buffers whose exact type is known. Their locks do nothing and their operations
/// read fields, so the results are the same.
class PlainBuffer {
public:
    using Storage = util::detail::BufferStorage<char16_t>;

    /// For `MOST_MOVED`. With MOST_SHORT instead, an operation makes no call.
    static constexpr int ANY_NUMBER = std::numeric_limits<int>::max();

    static bool isKnown(const IVXCharBuffer& buffer) noexcept
    {
        return isExactly<util::RWCharBuffer>(buffer) || isExactly<util::ROCharBuffer>(buffer)
            || isExactly<EmptyBuffer>(buffer);
    }

    /// The storage of an RWCharBuffer (exactly that class) that only one string uses; null for anything else.
    static Storage* soleStorage(IVXCharBuffer& buffer) noexcept;

    /// The storage of a string that may write to it without any further change; null for anything else.
    static Storage* writableStorage(String& text) noexcept
    {
        if (!isExactly<String>(text) || text.m_ansi != nullptr) [[unlikely]]
            return nullptr;
        return soleStorage(*text.m_buffer);
    }

    /// Makes the text `more` units longer and returns the place of the new units. Null, and no change, if that needs a
    /// copy or new storage.
    static char16_t* extend(String& text, int more) noexcept;

    /// Appends one unit. False, and no change, if that needs a copy or new storage.
    static bool push(String& text, char16_t unit) noexcept;

    /// Appends `count` units (1 to MOST_SHORT), which may be of the text itself. False, and no change, if that needs a copy
    /// or new storage. It makes no call.
    static bool appendShort(String& text, const char16_t* more, int count) noexcept;

    /// Appends `count` units (1 to MOST_SHORT) to the buffer that empty strings share: makes a new one with room for the
    /// next units. False, and no change, for any other text.
    static bool beginShort(String& text, const char16_t* first, int count);

    /// Appends to a text whose buffer is shared or read-only: makes a new buffer with room for both parts and for
    /// the next ones. `more` may be in the old buffer. False, and no change, for any other text.
    static bool appendToCopy(String& text, const char16_t* more, int count);

    /// Replaces `text` by the units of `source` (at most `MOST_MOVED`), which may be in its own storage. False, and no
    /// change, if that needs a copy or new storage.
    template <int MOST_MOVED = ANY_NUMBER>
    static bool overwrite(String& text, const char16_t* source, int length) noexcept;

    /// Replaces a range by `insert` units, which are not in the storage of the string. False, and no change, if they are, if
    /// that needs a copy or new storage, or if more than `MOST_MOVED` units are to move.
    template <int MOST_MOVED = ANY_NUMBER>
    static bool splice(String& target, int start, int count, const char16_t* text, int insert) noexcept;

    /// The same for any string and any units.
    static void spliceElsewhere(String& target, int start, int count, const char16_t* text, int insert);

    /// Replaces a range by `insert` units that are still to be written, and returns their place. Null, and no change,
    /// if that needs a copy or new storage, or if more than `MOST_MOVED` units are to move.
    template <int MOST_MOVED = ANY_NUMBER>
    static char16_t* openGap(Storage& storage, int start, int count, std::int64_t insert) noexcept;

    /// The text and length of a known buffer; false for any other.
    static bool read(const IVXCharBuffer& buffer, const char16_t** data, int* length) noexcept;

    /// The same for the buffer of a string.
    static bool read(const String& text, std::u16string_view* units) noexcept;

    /// The same for a string that is of no derived class.
    static bool readExact(const String& text, std::u16string_view* units) noexcept
    {
        return isExactly<String>(text) && read(text, units);
    }

    /// The text if it certainly ends with a zero unit, otherwise null. Only a string that owns its storage is certain:
    /// the unit after a wrapped text belongs to the owner of that text, and reading it may be an error.
    static const char16_t* terminated(const String& text) noexcept;

    /// A new buffer with count 0 and without text.
    static util::RWCharBuffer* make(int capacity)
    {
        return capacity >= 1 && capacity <= Storage::MOST_FOLLOWING ? makeShort(capacity, capacity, 0)
                                                                    : makeLong(capacity);
    }

    /// Sets the first reference to a new buffer that only the caller knows.
    template <class Buffer>
    static Reference<IVXCharBuffer> own(Buffer* fresh) noexcept;

    /// Adds a reference to the buffer of a string.
    static Reference<IVXCharBuffer> share(const Reference<IVXCharBuffer>& buffer) noexcept;

    /// Releases the buffer of a string without a virtual call, if it is of a known class; otherwise does nothing. After
    /// the last reference to an RWCharBuffer (exactly that class) no other can be added, so it is destroyed without
    /// changing its count.
    static void release(Reference<IVXCharBuffer>& buffer) noexcept;

    /// Frees the room after the text, but keeps room for at least `least` units in all.
    static void releaseExtra(util::RWCharBuffer& buffer, int least) noexcept { buffer.m_storage.releaseExtra(least); }

    /// A new buffer with the text that `fill` writes. `fill` gets an array of at most `longest` units and returns how
    /// many it has written. The capacity is that of a copy of the text.
    template <std::invocable<char16_t*> Fill>
    static Reference<IVXCharBuffer> filled(int longest, int capacity, Fill fill);

    /// A new buffer with `length` units, the terminator, and room for at least `capacity` units.
    static Reference<IVXCharBuffer> copyOf(const char16_t* text, int length, int capacity = 0);

    /// The same for a short text, whose units follow the buffer in one allocation: `length` is below `MOST_FOLLOWING`.
    [[gnu::always_inline]] static Reference<IVXCharBuffer> copyOfShort(
        const char16_t* text, int length, int capacity = 0);

    /// A new string with the units from `start` up to `end`. The copy of a word from the midst of a text has a fixed size:
    /// where words have all lengths, a processor cannot foresee which copy is next.
    static String part(std::u16string_view text, int start, int end);

private:
    /// The units that each buffer has at least.
    static constexpr std::size_t LEAST_UNITS = 16;

    /// One allocation for the buffer and its units: room for `room` units, of which `capacity` are used at first.
    static util::RWCharBuffer* makeShort(int room, int capacity, int length);
    static util::RWCharBuffer* makeLong(int capacity);
    template <int MOST_MOVED>
    static void moveAtMost(char16_t* target, const char16_t* source, std::size_t count) noexcept;
    static Reference<IVXCharBuffer> copyOfLong(const char16_t* text, int length, int capacity);
    /// Copies a text that is shorter than LEAST_UNITS and is followed by so many units that all of them can be read.
    static String copyOfLeast(std::u16string_view text);
};

inline util::RWCharBuffer* PlainBuffer::makeShort(int room, int capacity, int length)
{
    static_assert(sizeof(util::RWCharBuffer) == sizeof(util::AbstractCharBuffer) + sizeof(Storage), "units follow it");
    const auto units = static_cast<int>(Storage::adjust(room));
    auto* memory = static_cast<std::byte*>(
        vxsys::allocate(sizeof(util::RWCharBuffer) + static_cast<std::size_t>(units) * sizeof(char16_t)));
    auto* place = reinterpret_cast<char16_t*>(memory + sizeof(util::RWCharBuffer));
    auto* buffer = ::new (memory)
        util::RWCharBuffer(util::RWCharBuffer::Placed(), place, units); // never null, as compilers know
    buffer->m_storage.begin(length, capacity);
    return buffer;
}

template <int MOST_MOVED>
inline void PlainBuffer::moveAtMost(char16_t* target, const char16_t* source, std::size_t count) noexcept
{
    if constexpr (MOST_MOVED <= MOST_SHORT)
        moveShort(target, source, count);
    else
        moveUnits(target, source, count);
}

inline PlainBuffer::Storage* PlainBuffer::soleStorage(IVXCharBuffer& buffer) noexcept
{
    if (!isExactly<util::RWCharBuffer>(buffer)) [[unlikely]]
        return nullptr;
    auto& own = static_cast<util::RWCharBuffer&>(buffer);
    if (own.GetRefCount() >= 2) [[unlikely]]
        return nullptr;
    return &own.m_storage;
}

inline char16_t* PlainBuffer::extend(String& text, int more) noexcept
{
    Storage* storage = writableStorage(text);
    if (storage == nullptr || more < 1) [[unlikely]]
        return nullptr;
    const int length = storage->length();
    if (length < 1 || !storage->fits(std::int64_t {length} + more)) [[unlikely]]
        return nullptr;
    storage->setGreaterLength(length + more);
    char16_t* place = storage->data() + (length - 1);
    place[more] = 0;
    return place;
}

inline bool PlainBuffer::push(String& text, char16_t unit) noexcept
{
    Storage* storage = writableStorage(text);
    if (storage == nullptr) [[unlikely]]
        return false;
    const int length = storage->length();
    if (length < 1 || !storage->fits(std::int64_t {length} + 1)) [[unlikely]]
        return false;
    const char16_t units[] = {unit, 0};
    std::memcpy(storage->data() + (length - 1), units, sizeof units); // one store
    storage->setGreaterLength(length + 1);
    return true;
}

inline bool PlainBuffer::appendShort(String& text, const char16_t* more, int count) noexcept
{
    char16_t* const place = extend(text, count);
    if (place == nullptr) [[unlikely]]
        return false;
    moveShort(place, more, static_cast<std::size_t>(count));
    return true;
}

template <int MOST_MOVED>
inline bool PlainBuffer::overwrite(String& text, const char16_t* source, int length) noexcept
{
    Storage* storage = writableStorage(text);
    if (storage == nullptr || !storage->fits(std::int64_t {length} + 1)) [[unlikely]]
        return false;
    char16_t* const data = storage->data();
    moveAtMost<MOST_MOVED>(data, source, static_cast<std::size_t>(length));
    data[length] = 0;
    storage->setLength(length + 1);
    return true;
}

template <int MOST_MOVED>
inline char16_t* PlainBuffer::openGap(Storage& storage, int start, int count, std::int64_t insert) noexcept
{
    const int length = storage.length() - 1;
    if (length < 0) [[unlikely]]
        return nullptr;
    start = clipped(start, length);
    count = clipped(count, length - start);
    const int tail = length - start - count;
    const std::int64_t newLength = length + insert - count;
    if (tail > MOST_MOVED || !storage.fits(newLength + 1)) [[unlikely]]
        return nullptr;
    char16_t* const data = storage.data();
    char16_t* const place = data + start;
    if (insert != count)
        moveAtMost<MOST_MOVED>(place + insert, place + count, static_cast<std::size_t>(tail));
    data[newLength] = 0;
    storage.setLength(static_cast<int>(newLength) + 1);
    return place;
}

template <int MOST_MOVED>
inline bool PlainBuffer::splice(String& target, int start, int count, const char16_t* text, int insert) noexcept
{
    Storage* storage = writableStorage(target);
    if (storage == nullptr) [[unlikely]]
        return false;
    constexpr std::less<> IS_BEFORE;
    const char16_t* const own = storage->data();
    if (insert > 0 && IS_BEFORE(text, own + storage->length()) && IS_BEFORE(own, text + insert)) [[unlikely]]
        return false;
    char16_t* const place = openGap<MOST_MOVED>(*storage, start, count, insert);
    if (place == nullptr) [[unlikely]]
        return false;
    moveAtMost<MOST_MOVED>(place, text, static_cast<std::size_t>(insert));
    return true;
}

inline bool PlainBuffer::read(const IVXCharBuffer& buffer, const char16_t** data, int* length) noexcept
{
    if (isExactly<util::RWCharBuffer>(buffer)) [[likely]] {
        const Storage& storage = static_cast<const util::RWCharBuffer&>(buffer).m_storage;
        *data = storage.data();
        *length = storage.length();
        return true;
    }
    if (isExactly<util::ROCharBuffer>(buffer) || isExactly<EmptyBuffer>(buffer)) {
        const auto& wrap = static_cast<const util::ROCharBuffer&>(buffer);
        *data = wrap.m_storage.data();
        *length = wrap.m_storage.length();
        return true;
    }
    return false;
}

inline bool PlainBuffer::read(const String& text, std::u16string_view* units) noexcept
{
    const char16_t* data = nullptr;
    int length = 0;
    if (!read(*text.m_buffer, &data, &length))
        return false;
    *units = {data, static_cast<std::size_t>(std::max(length - 1, 0))};
    return true;
}

inline const char16_t* PlainBuffer::terminated(const String& text) noexcept
{
    if (!isExactly<String>(text) || !isExactly<util::RWCharBuffer>(*text.m_buffer))
        return nullptr;
    const Storage& storage = static_cast<const util::RWCharBuffer&>(*text.m_buffer).m_storage;
    const int length = storage.length();
    return length > 0 && storage.data()[length - 1] == 0 ? storage.data() : nullptr;
}

template <class Buffer>
Reference<IVXCharBuffer> PlainBuffer::own(Buffer* fresh) noexcept
{
    fresh->setFirstReference();
    Reference<IVXCharBuffer> first;
    first.attach(fresh);
    return first;
}

inline Reference<IVXCharBuffer> PlainBuffer::share(const Reference<IVXCharBuffer>& buffer) noexcept
{
    // The buffer has a reference, so it is not the first one that would also lock a module.
    if (isExactly<util::RWCharBuffer>(*buffer))
        static_cast<const util::RWCharBuffer&>(*buffer).InternalAddRef();
    else if (isExactly<util::ROCharBuffer>(*buffer))
        static_cast<const util::ROCharBuffer&>(*buffer).InternalAddRef();
    else
        return buffer;
    Reference<IVXCharBuffer> more;
    more.attach(buffer.get());
    return more;
}

inline void PlainBuffer::release(Reference<IVXCharBuffer>& buffer) noexcept
{
    if (buffer == nullptr)
        return;
    if (isExactly<util::RWCharBuffer>(*buffer)) [[likely]] {
        auto& own = static_cast<util::RWCharBuffer&>(*buffer.detach());
        if (own.GetRefCount() != 1 || own.GetComModule() != nullptr) [[unlikely]] {
            own.ComObject::Release();
            return;
        }
        if (!own.m_storage.isBorrowed()) [[unlikely]] // otherwise its destructor has nothing to do
            own.util::RWCharBuffer::~RWCharBuffer();
        vxsys::deallocate(&own);
    } else if (isExactly<EmptyBuffer>(*buffer)) {
        std::ignore = buffer.detach(); // it counts nothing
    } else if (isExactly<util::ROCharBuffer>(*buffer)) {
        static_cast<util::ROCharBuffer&>(*buffer.detach()).ComObject::Release();
    }
}

template <std::invocable<char16_t*> Fill>
Reference<IVXCharBuffer> PlainBuffer::filled(int longest, int capacity, Fill fill)
{
    util::RWCharBuffer* buffer = make(std::max(capacity, withTerminator(longest)));
    Reference<IVXCharBuffer> first = own(buffer);
    Storage& storage = buffer->m_storage;
    char16_t* const data = storage.data();
    const int length = fill(data);
    data[length] = 0;
    storage.setLength(length + 1);
    if (length != longest)
        storage.releaseExtra(capacity);
    return first;
}

inline Reference<IVXCharBuffer> PlainBuffer::copyOfShort(const char16_t* text, int length, int capacity)
{
    const int room = capacity > length ? capacity : length + 1;
    util::RWCharBuffer* buffer = makeShort(room, room, length + 1);
    char16_t* const data = buffer->m_storage.following();
    moveUnits(data, text, static_cast<std::size_t>(length));
    data[length] = 0;
    return own(buffer);
}

inline Reference<IVXCharBuffer> PlainBuffer::copyOf(const char16_t* text, int length, int capacity)
{
    const bool isShort = length >= 0 && length < Storage::MOST_FOLLOWING && capacity <= Storage::MOST_FOLLOWING;
    return isShort ? copyOfShort(text, length, capacity) : copyOfLong(text, length, capacity);
}

/// The text of a string under the read lock of its view, until the end of the block. Adds no reference: the string must
/// outlive it.
class [[nodiscard]] StringReadLock {
public:
    explicit StringReadLock(const String& text);
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

inline StringReadLock::StringReadLock(const String& text)
    : m_text(text)
{
    if (isExactly<String>(text) && PlainBuffer::read(*text.m_buffer, &m_data, &m_length))
        m_length = std::max(m_length - 1, 0);
    else
        lockView();
}

/// The text of `source` for an operation on `target`. It is a copy if both use one buffer with a real lock. Otherwise
/// the read lock of the source would block the write to the target for ever, and so would a second read lock while a
/// writer waits.
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

/// The text of a string under the write lock of its view. At the end of the block the length of the last `setLength` is
/// stored and the terminator is written. Without a `setLength` the length stays.
class [[nodiscard]] StringWriteLock {
public:
    explicit StringWriteLock(String& text, int minimumLength = 0)
        : StringWriteLock(text, minimumLength, [](int) { return 0; })
    {
    }
    /// If the write copies, the copy has room for `more(length)` units after the text of that length, in one
    /// allocation.
    template <std::invocable<int> More>
    StringWriteLock(String& text, int minimumLength, More more);
    ~StringWriteLock() noexcept(false);
    StringWriteLock(const StringWriteLock&) = delete;
    StringWriteLock& operator=(const StringWriteLock&) = delete;

    char16_t* data() const noexcept { return m_data; }
    int length() const noexcept { return m_length; }
    /// There is room for it already.
    void setLength(int length) noexcept { m_length = length; }
    /// Makes room. Earlier pointers become invalid. A failure leaves the text as it was.
    void ensureCapacity(int minimumLength);

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

template <std::invocable<int> More>
StringWriteLock::StringWriteLock(String& text, int minimumLength, More more)
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

inline StringWriteLock::~StringWriteLock() noexcept(false)
{
    if (m_storage == nullptr) {
        unlockView();
        return;
    }
    m_data[m_length] = 0;
    m_storage->setLength(m_length + 1);
}

inline void StringWriteLock::ensureCapacity(int minimumLength)
{
    const int needed = withTerminator(std::max(minimumLength, 0));
    if (m_storage == nullptr || m_storage->capacity() < needed)
        grow(needed);
    else
        m_data = m_storage->data();
}

} // namespace vx::detail
