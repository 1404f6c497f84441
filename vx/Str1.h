#pragma once

#include "vx/Api.h"
#include "vx/OwningArray.h"
#include "vx/StrBuf1.h"

#include <compare>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <functional>
#include <iosfwd>
#include <string>
#include <string_view>
#include <utility>

namespace vx::text::charset {
class CharToByteConverter;
}

namespace vx {

class String;

/// UTF-16 text for hot paths: it has no locks, no interfaces and no terminator, and a substring costs no copy.
///
/// Positions and lengths count 16-bit units. A length of -1 means a zero-terminated source, an end or count of -1 the
/// end of the text. Strings share a buffer until one of them writes. The reference count of the buffer is a plain
/// number, so a string and all that share its buffer belong to one thread. A buffer holds at most 16,777,215 units.
/// More throws OutOfMemoryException and leaves the old text.
///
/// A copy, an assigned string and a substring share the buffer of their source. A buffer on the heap lives as long as a
/// string uses it. A buffer may also be part of its owner (Str1Static, Str1Local, Str1Fixed). All strings that share
/// such a buffer must be destroyed or changed before the owner is destroyed. `detached` and `copy` give a string that
/// does not depend on the owner, and a copy of an rvalue owner does not share. The text of a Str1Wrap must outlive all
/// strings that share it.
class VX_API Str1 {
public:
    class Appendor;

    Str1() noexcept = default;
    /// Allocates a buffer of that capacity; below 1 none.
    template <std::integral Count>
    explicit Str1(Count capacity)
    {
        if (std::cmp_greater(capacity, 0))
            take(newStrBuf1Cap(std::in_range<std::uint32_t>(capacity) ? static_cast<std::uint32_t>(capacity) : ~0U));
    }
    /// A unit is no capacity.
    explicit Str1(bool) = delete;
    explicit Str1(char) = delete;
    explicit Str1(wchar_t) = delete;
    explicit Str1(char8_t) = delete;
    explicit Str1(char16_t) = delete;
    explicit Str1(char32_t) = delete;
    Str1(std::nullptr_t) = delete;
    /// Shares the buffer of `other`.
    Str1(const Str1& other) noexcept
        : m_buffer(other.m_buffer)
        , m_offset(other.m_offset)
        , m_length(other.m_length)
    {
        if (m_buffer != nullptr)
            addReference(*m_buffer);
    }
    /// Shares the buffer for the range. A `start` below 0, or not below `end`, gives an empty string without a buffer.
    Str1(const Str1& other, std::int32_t start, std::int32_t end = -1) noexcept
        : Str1(other, Range(start, end, other.m_length))
    {
    }
    Str1(Str1&& other);
    Str1(Str1&& other, std::int32_t start, std::int32_t end = -1);
    /// Copies the text.
    Str1(const char16_t* text, std::int32_t length = -1);
    Str1(std::u16string_view text);
    /// Decodes narrow text. A null `encoding` is the default encoding; an unknown one throws UnknownEncodingException.
    Str1(const char* bytes, std::int32_t length = -1, const char16_t* encoding = nullptr);
    Str1(const signed char* bytes, std::int32_t length = -1, const char16_t* encoding = nullptr);
    /// These decode UTF-8. A byte that begins no character becomes U+FFFD. An encoded surrogate, and an end inside a
    /// character, throw InvalidCharacterException. A null pointer is an empty text.
    Str1(std::string_view utf8);
    Str1(std::u8string_view utf8);
    Str1(const std::string& utf8);
    Str1(const std::u8string& utf8);
    Str1(const char8_t* utf8);
    virtual ~Str1()
    {
        if (m_buffer != nullptr)
            release(*m_buffer);
    }

    /// A buffer with room for `capacity` units that is ready for use at no cost, or null.
    virtual StrBuf1* fastAllocBuffer(std::uint32_t capacity);

    /// These share the buffer, but copy the text of an rvalue that owns its buffer.
    Str1& operator=(const Str1& other) noexcept;
    Str1& operator=(Str1&& other);
    void setTo(const Str1& other) noexcept;
    void setTo(Str1&& other);

    /// These copy the text to a buffer that no other string shares, at offset 0. `copy` returns 0.
    Str1& operator=(const char16_t* text);
    Str1& operator=(const String& text);
    Str1& operator=(std::u16string_view text);
    std::int32_t copy(const char16_t* text, std::int32_t length = -1);
    std::int32_t copy(const Str1& text);
    std::int32_t copy(const String& text);

    Str1& operator+=(const char16_t* text);
    Str1& operator+=(char16_t ch);
    Str1& operator+=(const String& text);
    Str1& operator+=(const Str1& text);
    Str1& operator+=(std::u16string_view text);
    /// All return 0. Appending an empty text changes nothing.
    std::int32_t append(const char16_t* text, std::int32_t length = -1);
    std::int32_t append(char16_t ch, int repeat = 1);
    std::int32_t append(const String& text);
    std::int32_t append(std::u16string_view text);
    /// A string without a buffer shares the buffer of `other`.
    std::int32_t append(const Str1& other, std::int32_t count = -1, std::int32_t start = 0);
    std::int32_t append(Str1&& other, std::int32_t count = -1, std::int32_t start = 0);

    /// Keeps the buffer.
    void clear() noexcept;
    /// Releases the buffer too.
    void reset() noexcept;
    /// For a caller that has written into the buffer: changes the length by `difference`, but not below 0 or beyond the
    /// room in the buffer.
    void adjustLength(std::int32_t difference) noexcept;

    std::int32_t getLength() const noexcept { return m_length; }
    bool isEmpty() const noexcept { return m_length == 0; }
    /// The text's start, or null for an empty text. There is no terminator.
    char16_t* getData0() const noexcept { return m_length != 0 ? first() : nullptr; }
    /// The text's start, also of an empty text; null without a buffer.
    char16_t* getData1() const noexcept { return m_buffer != nullptr ? first() : nullptr; }
    /// The index is not checked. Without a buffer every unit is 0.
    char16_t operator[](int index) const noexcept { return m_buffer != nullptr ? first()[index] : u'\0'; }
    char16_t getCharAt(int index) const noexcept { return (*this)[index]; }

    bool operator==(const Str1& other) const noexcept { return *this == other.view(); }
    bool operator==(const char16_t* text) const noexcept;
    bool operator==(const String& text) const;
    bool operator==(std::u16string_view text) const noexcept
    {
        return text.size() == static_cast<std::size_t>(m_length)
            && (m_length == 0 || std::memcmp(first(), text.data(), text.size() * sizeof(char16_t)) == 0);
    }
    /// By unit value.
    std::strong_ordering operator<=>(const Str1& other) const noexcept { return view() <=> other.view(); }
    std::strong_ordering operator<=>(const char16_t* text) const noexcept;
    std::strong_ordering operator<=>(const String& text) const;
    std::strong_ordering operator<=>(std::u16string_view text) const noexcept { return view() <=> text; }

    /// The sampled hash of `String::hashCode`.
    std::uint32_t hashCode() const noexcept;
    /// A position or -1, also for a negative `from`.
    int indexOf(char16_t ch, int from = 0, bool ignoreCase = false) const noexcept;
    /// A bool is no position.
    template <std::same_as<bool> Flag>
    int indexOf(char16_t, Flag) const = delete;
    bool startsWith(const Str1& text, bool ignoreCase = false) const noexcept;
    bool startsWith(const char16_t* text, int length = -1, bool ignoreCase = false) const noexcept;
    /// A bool directly after the text is `ignoreCase`, not a length of 1.
    template <std::same_as<bool> Flag>
    bool startsWith(const char16_t* text, Flag ignoreCase) const noexcept
    {
        return startsWith(text, -1, ignoreCase);
    }

    /// Shares the buffer, as the constructor from a range does.
    Str1 substring(std::int32_t start, std::int32_t end = -1) const& { return Str1(*this, start, end); }
    Str1 substring(std::int32_t start, std::int32_t end = -1) && { return Str1(std::move(*this), start, end); }
    /// Both return 0. If no unit changes, the buffer stays shared.
    std::int32_t toLower();
    std::int32_t toUpper();
    String toVXString() const;

    /// This text, independent of the life of any other object: shares a buffer that owns its units, otherwise copies.
    Str1 detached() const;

    /// Valid until the text changes.
    std::u16string_view view() const noexcept { return {getData0(), static_cast<std::size_t>(m_length)}; }
    operator std::u16string_view() const noexcept { return view(); }
    /// A surrogate without its other half, leading or trailing, throws InvalidCharacterException.
    std::string toUtf8() const;

    /// These three return 0. For bytes that end inside a character they return RESULT_FAIL and keep the characters
    /// before it.
    std::int32_t copyA(const char* bytes, std::int32_t length = -1, const char16_t* encoding = nullptr);
    std::int32_t copyA(const signed char* bytes, std::int32_t length = -1, const char16_t* encoding = nullptr);
    std::int32_t appendA(const char* bytes, std::int32_t length = -1, const char16_t* encoding = nullptr);
    std::int32_t appendA(const signed char* bytes, std::int32_t length = -1, const char16_t* encoding = nullptr);
    /// Encodes from `*position` (null: 0) as many whole characters as fit in `size` bytes. `*written` and `*position`
    /// are also set after a failure. RESULT_BUFFER_TOO_SMALL means that a part of the text is left.
    std::int32_t convertToA(char* out, std::int32_t size, text::charset::CharToByteConverter* converter,
        std::int32_t* written = nullptr, std::int32_t* position = nullptr) const;
    /// As above, and adds a zero byte, which `written` does not count, unless the result is negative.
    std::int32_t convertToAZ(char* out, std::int32_t size, const char16_t* encoding = nullptr,
        std::int32_t* written = nullptr, std::int32_t* position = nullptr) const;
    /// The number of bytes that the text from `position` on needs, without a terminator.
    std::int32_t getLengthA(std::int32_t* length, const char16_t* encoding = nullptr, std::int32_t position = 0) const;
    /// The encoded text, zero-terminated.
    OwningArray<char> getBytesAZ(const char16_t* encoding = nullptr) const;

    /// Prepares the buffer for `capacity` units from the start of the text, and keeps the text from `start` up to
    /// `end`. The kept text stays where it is. If it has to move, it moves to the start of the buffer and becomes the
    /// whole text. Returns the number of units that may be written from the start of the text on. A `capacity` of 0 on
    /// a string without a buffer returns 0.
    std::uint32_t ensureCapacity1(std::uint32_t capacity, std::int32_t start, std::int32_t end = -1);
    /// `n` rounded up to a multiple of 16. Throws OutOfMemoryException if that needs more than 31 bits.
    static std::int32_t normalizeCapacity(std::uint32_t n);
    /// A new buffer with reference count 0, in one allocation with its units. `capacity` is rounded up to a multiple of
    /// 16.
    static StrBuf1* newStrBuf1Cap(std::uint32_t capacity);

protected:
    /// Adds a reference to the new buffer before it releases the old one. Offset and length become those of a whole
    /// text.
    void take(StrBuf1* buffer, std::int32_t length = 0) noexcept;
    /// The same for buffers, the new one and the old one, that count no references.
    void adopt(StrBuf1* buffer, std::int32_t length) noexcept
    {
        m_buffer = buffer;
        m_offset = 0;
        m_length = length;
    }
    /// The number of units in a text of `length`: -1 measures it; any other negative length, and null, give 0.
    static std::int32_t measured(const char16_t* text, std::int32_t length) noexcept;
    bool uses(const StrBuf1* buffer) const noexcept { return m_buffer == buffer; }
    /// Lets strings count the references to `buffer`, whose class is StrBuf1Wrap and no class derived from it, inline.
    static StrBuf1* countedPlainly(StrBuf1* buffer) noexcept
    {
        buffer->m_flags |= StrBuf1::PLAIN_COUNT;
        return buffer;
    }

private:
    /// A part of a text of `length` units. Compares as unsigned, which needs one branch where it would need two.
    struct Range {
        Range(std::int32_t first, std::int32_t last, std::int32_t length) noexcept
            : start(static_cast<std::uint32_t>(first))
            , end(static_cast<std::uint32_t>(last))
        {
            if (end > static_cast<std::uint32_t>(length))
                end = last < -1 ? 0 : static_cast<std::uint32_t>(length);
        }
        bool isEmpty() const noexcept { return start >= end; }

        std::uint32_t start;
        std::uint32_t end;
    };
    Str1(const Str1& other, const Range& range) noexcept
        : m_buffer(range.isEmpty() ? nullptr : other.m_buffer)
        , m_offset(range.isEmpty() ? 0 : other.m_offset + range.start)
        , m_length(range.isEmpty() ? 0 : static_cast<std::int32_t>(range.end - range.start))
    {
        if (!range.isEmpty())
            addReference(*m_buffer); // there is one, since the text is not empty
    }

    /// As the operations of the buffer, but without a virtual call for most buffers.
    static void addReference(StrBuf1& buffer)
    {
        if (buffer.countsPlainly())
            ++buffer.m_count;
        else
            buffer.AddRef();
    }
    static void release(StrBuf1& buffer)
    {
        if (buffer.countsPlainly() && buffer.m_count > 1)
            --buffer.m_count;
        else
            buffer.Release();
    }
    char16_t* first() const noexcept { return m_buffer->getData() + m_offset; }
    void share(const Str1& other, std::int32_t start, std::int32_t length) noexcept;
    /// The buffer is part of a string, this one or another.
    bool isEmbedded() const noexcept { return m_buffer != nullptr && m_buffer->isStaticInstance(); }
    /// `text` is in the storage that a write to this string would move.
    bool isOwnText(const char16_t* text) const noexcept;
    void moveTo(StrBuf1* buffer, std::int32_t start, std::int32_t kept) noexcept;
    char16_t* extend(std::int32_t count);
    void reserve(std::int64_t more);
    std::int32_t changeCase(char16_t (*map)(char16_t) noexcept);

    StrBuf1* m_buffer = nullptr;
    std::uint32_t m_offset = 0;
    std::int32_t m_length = 0;
};

/// Appends many pieces to a string and seldom checks its capacity. The target must outlive it.
class VX_API Str1::Appendor {
public:
    /// If there is no room, it reserves more than it needs: `firstReserve` units the first time, `laterReserve` each
    /// later time. A reserve below 0 is taken as 0.
    Appendor(Str1& target, std::int32_t firstReserve, std::int32_t laterReserve) noexcept;
    Appendor(const Appendor&) = delete;
    Appendor& operator=(const Appendor&) = delete;

    /// Adds `n` units to the length of the target and returns the place to which the caller writes them.
    char16_t* checkAvailable(std::int32_t n);
    /// These return 0. A length below 1 adds nothing.
    std::int32_t fastAppend(const char16_t* text, std::int32_t n);
    std::int32_t fastAppend(char16_t ch);
    /// Reserves room also for a length below 1.
    std::int32_t firstAppend(const char16_t* text, std::int32_t n);
    /// Makes room for `n` units and the reserve.
    void setRemCap(std::int32_t n);
    /// Call it after the target was changed in another way.
    void resync() noexcept { m_room = 0; }
    /// 1 once the first reserve has been used.
    short used() const noexcept { return m_firstReserve == SPENT ? 1 : 0; }

private:
    static constexpr std::int32_t SPENT = -1;

    Str1& m_target;
    std::int32_t m_room = 0;
    std::int32_t m_firstReserve;
    std::int32_t m_laterReserve;
};

/// Text of another owner, which is neither copied nor freed. The buffer is on the heap; its units belong to that owner.
class VX_API Str1Wrap : public Str1 {
public:
    /// The first `capacity` units are changed in place. With 0 the text is never written to.
    Str1Wrap(const char16_t* text, std::int32_t length = -1, std::uint32_t capacity = 0);
    ~Str1Wrap() override;

    using Str1::operator=;
};

/// Text of another owner that is never written to, and needs no allocation. The first write copies it to a new buffer.
class VX_API Str1Static : public Str1 {
public:
    Str1Static(const char16_t* text, std::int32_t length = -1) noexcept;
    Str1Static(const Str1Static&) = delete;
    ~Str1Static() override;

    using Str1::operator=;
    /// Copies the text; the two strings do not share.
    Str1Static& operator=(const Str1Static& other);

private:
    StrBuf1Static m_static;
};

/// A copy of the text that shares no buffer.
class VX_API Str1Copy : public Str1 {
public:
    Str1Copy(const char16_t* text, std::int32_t length = -1);
    Str1Copy(const String& text);
    ~Str1Copy() override;

    using Str1::operator=;
};

/// Base of strings with a buffer inside the object. They use it again whenever it is free. If another string still
/// shares the buffer when its owner is destroyed, the program is wrong and is aborted.
class VX_API Str1Embedded : public Str1 {
public:
    Str1Embedded(const Str1Embedded&) = delete;
    ~Str1Embedded() override;

    using Str1::operator=;
    /// Copies the text; the two strings do not share. Assignments between two strings of one derived class do the same.
    Str1Embedded& operator=(const Str1Embedded& other);

    // Str1
    StrBuf1* fastAllocBuffer(std::uint32_t capacity) override;

protected:
    /// `embedded` is a field of the derived class. It is used from the call of `enter` on.
    explicit Str1Embedded(StrBuf1* embedded) noexcept
        : m_embedded(embedded)
    {
    }
    /// Uses the embedded buffer, which has been constructed, with the `length` units in it as the text.
    void enter(std::int32_t length) noexcept;
    /// Call it in the destructor of the derived class, while the embedded buffer still exists.
    void leave() noexcept;

private:
    StrBuf1* m_embedded;
};

/// Text in storage of the caller, typically an array on the stack, as long as it fits there.
class VX_API Str1Local : public Str1Embedded {
public:
    /// `text` has room for `capacity` units, of which the first `length` are used.
    Str1Local(const char16_t* text, std::int32_t length, std::uint32_t capacity);
    ~Str1Local() override;

    using Str1Embedded::operator=;
    Str1Local& operator=(const Str1Local& other);

private:
    StrBuf1Wrap m_local;
};

/// A string that needs no heap for up to `Units` units.
template <std::uint32_t Units>
class VX_API Str1Fixed : public Str1Embedded {
public:
    Str1Fixed()
        : Str1Embedded(&m_fixed)
    {
        enter(0);
    }
    ~Str1Fixed() override { leave(); }

    using Str1Embedded::operator=;
    Str1Fixed& operator=(const Str1Fixed& other)
    {
        copy(other);
        return *this;
    }

private:
    StrBuf1Fixed<Units> m_fixed;
};

extern template class VX_API Str1Fixed<128>;

/// Writes UTF-8. If `toUtf8` throws or memory is exhausted, sets the badbit of the stream, and throws only if the
/// stream's exceptions() ask for that.
VX_API std::ostream& operator<<(std::ostream& stream, const Str1& text);

} // namespace vx

template <>
struct std::hash<vx::Str1> {
    std::size_t operator()(const vx::Str1& text) const noexcept { return text.hashCode(); }
};
