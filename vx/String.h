#pragma once

#include "vx/Reference.h"
#include "vx/StringLiteral.h"
#include "vx/util/AbstractCharBuffer.h"

#include <compare>
#include <concepts>
#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <iosfwd>
#include <string>
#include <string_view>

namespace vx::util {
class IByteBuffer;
}

namespace vx::detail {
class PlainBuffer;
class StringReadLock;
class StringSource;
class StringWriteLock;
} // namespace vx::detail

namespace vx {

/// UTF-16 text, zero-terminated, in a buffer that several strings may share until one of them writes.
///
/// @code
/// String name = u"Grüße"; // or "Grüße" in UTF-8
/// const String before = name; // shares the text until one of the two changes
/// name += u", 世界";
/// assert(before == u"Grüße" && name.getLength() == 9);
/// assert(name.substring(7) == u"世界" && name.toUtf8() == "Grüße, 世界");
/// @endcode
///
/// Positions and lengths count 16-bit units. A length of -1 means a zero-terminated source; a position or count of -1 the
/// end or all. Positions below that are the caller's error and are taken as 0; `getCharAt`, `setCharAt` and `operator[]`
/// compare the index with nothing.
///
/// A value class: copied, embedded and passed by `const String&`, and at once an `IVXCharBuffer` that other components
/// read and write. Strings that share a buffer may live on different threads; one string belongs to one thread at a time,
/// also for `const` operations, since `getBytes` keeps what it encoded. A failure of the held buffer is thrown as a
/// ResultException with its code, a size that cannot be as std::bad_alloc; the old text then stands.
class VX_API String : public util::AbstractCharBuffer {
public:
    class AnsiBytes;

    /// How a source is taken. Any other value is AcquireCopy.
    enum AcquireMode : int {
        AcquireCopy = 0,
        AcquireShare = 1, ///< a count on the source's buffer; a plain text has none and is copied
        AcquireWrap = 2, ///< the source's text itself, which must outlive this string and all who share it
        AcquireUpper = 3 ///< a copy in upper case
    };

    /// Bits of the sides that `trim` works on.
    enum TrimType { TrimLeading = 1, TrimTrailing = 2, TrimBoth = 3 };

    String();
    /// Shares the buffer of `other`.
    String(const String& other) noexcept;
    /// Room for `capacity` units; the text is empty.
    explicit String(int capacity);
    String(const char16_t* text, int length = -1, int capacity = 0);
    explicit String(char16_t ch, int count = 1, int capacity = 0);
    String(const STRUCT_VX_STR_LIT_INFO& literal);
    /// Copies under the read lock of `buffer`.
    explicit String(util::ICharBuffer* buffer);
    /// A range of `other`. AcquireShare takes the whole buffer; a wrapped range need not end with a zero unit.
    String(AcquireMode mode, const String& other, int start = 0, int end = -1, int capacity = 0);
    /// AcquireWrap needs the zero at `text[length]`.
    String(AcquireMode mode, const char16_t* text, int length = -1, int capacity = 0);
    /// AcquireShare adopts the buffer, whose length counts a terminator; the others read it as text without one.
    String(AcquireMode mode, util::ICharBuffer* buffer);
    /// A mode is no length; it comes first.
    String(const char16_t* text, AcquireMode) = delete;
    /// Decodes narrow text. A null `encoding` is the default encoding; an unknown one throws UnknownEncodingException. A
    /// character that is incomplete at the end is left out.
    String(const char* bytes, int length = -1, const char16_t* encoding = nullptr, int capacity = 0);
    String(const signed char* bytes, int length = -1, const char16_t* encoding = nullptr, int capacity = 0);
    String(const unsigned char* bytes, int length = -1, const char16_t* encoding = nullptr, int capacity = 0);
    String(std::u16string_view text);
    /// These decode UTF-8, as do the assignments of the same arguments. A byte that begins no character becomes U+FFFD. An
    /// encoded surrogate, and an end inside a character, throw InvalidCharacterException. A null pointer is an empty text.
    String(std::string_view utf8);
    String(std::u8string_view utf8);
    String(const std::string& utf8);
    String(const std::u8string& utf8);
    String(const char8_t* utf8);
    /// A character or a truth value is no capacity.
    explicit String(bool) = delete;
    explicit String(char) = delete;
    explicit String(wchar_t) = delete;
    explicit String(char8_t) = delete;
    explicit String(char32_t) = delete;
    String(std::nullptr_t) = delete;

    /// What the constructors of the same arguments make.
    static String CVXString(const String& other);
    static String CVXString(const char16_t* text, int length = -1, int capacity = 0);
    static String CVXString(const char* bytes, int length = -1, const char16_t* encoding = nullptr, int capacity = 0);

    ~String() noexcept override;

    /// Copies the text; the two strings do not share.
    String& operator=(const String& other);
    /// Takes the buffer of `other` where nobody else holds it and it may be written; copies the text elsewhere.
    String& operator=(String&& other);
    String& operator=(const char16_t* text);
    String& operator=(char16_t ch);
    String& operator=(const char* bytes);
    String& operator=(std::u16string_view text);
    String& operator=(std::string_view utf8);
    String& operator=(std::u8string_view utf8);
    String& operator=(const std::string& utf8);
    String& operator=(const std::u8string& utf8);
    String& operator=(const char8_t* utf8);
    String& setTo(const String& other);
    String& setTo(const char16_t* text, int length = -1);
    String& setTo(const char16_t* text, AcquireMode) = delete;
    String& setTo(char16_t ch, int count = 1);
    String& setTo(AcquireMode mode, const char16_t* text, int length = -1);
    String& setTo(AcquireMode mode, const String& other, int start = 0, int end = -1);
    String& setTo(const char* bytes, int length = -1, const char16_t* encoding = nullptr);
    /// Shares the buffer of `other` from now on.
    String& setAddRef(const String& other) noexcept;
    void swap(String& other) noexcept;
    friend void swap(String& left, String& right) noexcept { left.swap(right); }

    // AbstractCharBuffer: lengths less the terminator. A write copies first where the buffer is shared or read-only, so
    // every string is writable. Reads and releases must pair.
    int getLength() const override;
    const char16_t* getData() const override;
    const char16_t* getReadLock() const override;
    void releaseReadLock() const override;
    bool isWritable() const override;
    char16_t* getWriteLock(int minimumLength) override;
    /// Grows without copying first: take the write lock before.
    char16_t* ensureCapacity(int minimumLength) override;
    /// Writes the terminator. -1 measures the text.
    void releaseWriteLock(int length) override;
    /// Storage that other strings read is left alone.
    void freeExtra() override;

    /// The type of the argument picks the width of the text, its value means nothing.
    const char16_t* getDataT(int width) const;
    const char* getDataT(bool width) const;
    const char16_t* getReadLockT(int width) const;
    const char* getReadLockT(bool width) const;

    /// Makes the held buffer this string's own and writable, with room for `capacity` units, terminator included.
    void copyOnWrite(int capacity);

    /// The text encoded and zero-terminated, kept until the text changes or another encoding is asked for.
    const char* getBytes(const char16_t* encoding = nullptr) const;
    const char* getBytes(std::nullptr_t) const { return getBytes(); }
    /// As above under the read lock, which `releaseReadLock` ends.
    const char* getBytesReadLock(const char16_t* encoding = nullptr) const;
    void getBytes(util::IByteBuffer* out, const char16_t* encoding = nullptr) const;
    /// Returns the bytes written, the terminator included if it fitted. Only whole characters are written.
    std::int32_t getBytes(char* out, std::int32_t size, const char16_t* encoding = nullptr) const;
    std::int32_t getBytes(signed char* out, std::int32_t size, const char16_t* encoding = nullptr) const;
    std::int32_t getBytes(unsigned char* out, std::int32_t size, const char16_t* encoding = nullptr) const;

    // Object
    Object* clone() const override;
    /// Throws CastFailedException for an `other` that is no String.
    int compareTo(const Object& other) const override;
    /// False for an `other` that is no String.
    bool equals(const Object& other) const override;
    std::uint32_t hashCode() const override;
    /// Samples at most 63 units, however long the text.
    std::uint32_t hashCode(bool ignoreCase) const;
    String toString() const override;

    /// The one edit on which all others rest: `count` units from `start` give way to `text` from `textStart` on.
    String& replace(int start, int count, const char16_t* text, int length = -1, int textStart = 0);
    String& replace(int start, int count, const String& text, int textStart = 0);
    String& replace(int start, int count, char16_t ch, int repeat = 1);
    String& append(const char16_t* text, int length = -1);
    String& append(char16_t ch, int repeat = 1);
    String& append(const String& text);
    String& append(std::u16string_view text);
    String& operator+=(const char16_t* text);
    String& operator+=(char16_t ch);
    String& operator+=(const String& text);
    String& operator+=(std::u16string_view text);
    String& prepend(const char16_t* text, int length = -1);
    String& prepend(char16_t ch, int repeat = 1);
    String& prepend(const String& text);
    String& insert(int position, const char16_t* text, int length = -1);
    String& insert(int position, const String& text);
    String& remove(int start, int count = -1);
    /// Cuts, or fills up with `fill`.
    void resize(int length, char16_t fill);
    /// Keeps the buffer and its capacity.
    void clear();
    void setCharAt(int index, char16_t ch);
    /// Every unit `from` becomes `to`.
    void translate(char16_t from, char16_t to);
    /// These three stand for the interface's sake: the text stays as it is.
    void translate(const char16_t* from, int fromLength, const char16_t* to, int toLength);
    void translate(const char16_t* from, const char16_t* to);
    void translate(const String& from, const String& to);
    void toLower();
    void toUpper();
    /// Takes space, tab, carriage return and line feed off the ends.
    void trim(TrimType type = TrimBoth);
    void trim(char16_t ch, TrimType type = TrimBoth);
    /// `set` is zero-terminated, whatever `length` says. Its terminator is part of it: zero units are trimmed too.
    void trim(const char16_t* set, int length = -1, TrimType type = TrimBoth);
    void trim(const char16_t* set, TrimType type) { trim(set, -1, type); }
    void trim(const String& set, TrimType type = TrimBoth);

    /// The units from `start` up to `end`, both clipped to the text, as a text of its own.
    String substring(int start, int end = -1) const;
    char16_t getCharAt(int index) const;
    char16_t operator[](int index) const;

    bool equals(const String& other, bool ignoreCase = false) const;
    bool equals(const char16_t* text, int length = -1, bool ignoreCase = false) const;
    /// Here and below, a bool directly after a zero-terminated text is `ignoreCase`, not a length of 1.
    template <std::same_as<bool> Flag>
    bool equals(const char16_t* text, Flag ignoreCase) const
    {
        return equals(text, -1, ignoreCase);
    }
    /// By unit value, a prefix before the longer text. Where one is a prefix of the other, the result is the difference of
    /// the lengths.
    int compare(const String& other, bool ignoreCase = false) const;
    int compare(const char16_t* text, int length = -1, bool ignoreCase = false) const;
    template <std::same_as<bool> Flag>
    int compare(const char16_t* text, Flag ignoreCase) const
    {
        return compare(text, -1, ignoreCase);
    }
    bool regionMatches(int start, int count, const String& other, int otherStart = 0, bool ignoreCase = false) const;
    bool regionMatches(
        int start, int count, const char16_t* text, int length = -1, int textStart = 0, bool ignoreCase = false) const;
    int regionCompare(int start, int count, const String& other, int otherStart = 0, bool ignoreCase = false) const;
    int regionCompare(
        int start, int count, const char16_t* text, int length = -1, int textStart = 0, bool ignoreCase = false) const;
    /// Here and below, deleted forms refuse a bool where a length or a position belongs.
    template <class Text, std::same_as<bool> Flag>
    bool regionMatches(int, int, const Text&, Flag) const = delete;
    template <std::same_as<bool> Flag>
    bool regionMatches(int, int, const char16_t*, int, Flag) const = delete;
    template <class Text, std::same_as<bool> Flag>
    int regionCompare(int, int, const Text&, Flag) const = delete;
    template <std::same_as<bool> Flag>
    int regionCompare(int, int, const char16_t*, int, Flag) const = delete;
    bool startsWith(const String& text, bool ignoreCase = false) const;
    bool startsWith(const char16_t* text, int length = -1, bool ignoreCase = false) const;
    template <std::same_as<bool> Flag>
    bool startsWith(const char16_t* text, Flag ignoreCase) const
    {
        return startsWith(text, -1, ignoreCase);
    }
    bool endsWith(const String& text, bool ignoreCase = false) const;
    bool endsWith(const char16_t* text, int length = -1, bool ignoreCase = false) const;
    template <std::same_as<bool> Flag>
    bool endsWith(const char16_t* text, Flag ignoreCase) const
    {
        return endsWith(text, -1, ignoreCase);
    }
    /// False for an empty `text`.
    bool contains(const String& text, bool ignoreCase = false) const;
    bool contains(const char16_t* text, int length = -1, bool ignoreCase = false) const;
    template <std::same_as<bool> Flag>
    bool contains(const char16_t* text, Flag ignoreCase) const
    {
        return contains(text, -1, ignoreCase);
    }

    /// Searches give a position or -1; an empty pattern or set finds nothing. A search backwards must end at or before
    /// `from`.
    int indexOf(char16_t ch, int from = 0, bool ignoreCase = false) const;
    int indexOf(const char16_t* text, int length = -1, int from = 0, bool ignoreCase = false) const;
    int indexOf(const String& text, int from = 0, bool ignoreCase = false) const;
    int lastIndexOf(char16_t ch, int from = -1, bool ignoreCase = false) const;
    int lastIndexOf(const char16_t* text, int length = -1, int from = -1, bool ignoreCase = false) const;
    int lastIndexOf(const String& text, int from = -1, bool ignoreCase = false) const;
    int findFirstOf(const char16_t* set, int length = -1, int from = 0, bool ignoreCase = false) const;
    int findFirstOf(const String& set, int from = 0, bool ignoreCase = false) const;
    int findFirstOfCase(const char16_t* set, int length = -1, int from = 0) const;
    int findFirstOfCase(const String& set, int from = 0) const;
    int findFirstNotOf(const char16_t* set, int length = -1, int from = 0, bool ignoreCase = false) const;
    int findFirstNotOf(const String& set, int from = 0, bool ignoreCase = false) const;
    int findLastOf(const char16_t* set, int length = -1, int from = -1, bool ignoreCase = false) const;
    int findLastOf(const String& set, int from = -1, bool ignoreCase = false) const;
    int findLastNotOf(const char16_t* set, int length = -1, int from = -1, bool ignoreCase = false) const;
    int findLastNotOf(const String& set, int from = -1, bool ignoreCase = false) const;
    template <class Text, std::same_as<bool> Flag>
    int indexOf(const Text&, Flag) const = delete;
    template <std::same_as<bool> Flag>
    int indexOf(const char16_t*, int, Flag) const = delete;
    template <class Text, std::same_as<bool> Flag>
    int lastIndexOf(const Text&, Flag) const = delete;
    template <std::same_as<bool> Flag>
    int lastIndexOf(const char16_t*, int, Flag) const = delete;
    template <class Text, std::same_as<bool> Flag>
    int findFirstOf(const Text&, Flag) const = delete;
    template <std::same_as<bool> Flag>
    int findFirstOf(const char16_t*, int, Flag) const = delete;
    template <class Text, std::same_as<bool> Flag>
    int findFirstOfCase(const Text&, Flag) const = delete;
    template <std::same_as<bool> Flag>
    int findFirstOfCase(const char16_t*, int, Flag) const = delete;
    template <class Text, std::same_as<bool> Flag>
    int findFirstNotOf(const Text&, Flag) const = delete;
    template <std::same_as<bool> Flag>
    int findFirstNotOf(const char16_t*, int, Flag) const = delete;
    template <class Text, std::same_as<bool> Flag>
    int findLastOf(const Text&, Flag) const = delete;
    template <std::same_as<bool> Flag>
    int findLastOf(const char16_t*, int, Flag) const = delete;
    template <class Text, std::same_as<bool> Flag>
    int findLastNotOf(const Text&, Flag) const = delete;
    template <std::same_as<bool> Flag>
    int findLastNotOf(const char16_t*, int, Flag) const = delete;

    /// Becomes the template with `{0}`, `{1}`, ... filled from zero-terminated UTF-16 arguments (`const char16_t*`), taken
    /// in order for as long as the next number occurs in the template. Text that was inserted is not looked at again.
    const String& format(const char16_t* format, int length, ...);
    const String& format(String format, ...);
    const String& formatv(const char16_t* format, int length, std::va_list arguments);
    const String& formatv(String format, std::va_list arguments);

    /// Integers in decimal, floating-point numbers with six significant digits in the shorter form ("%g"), always with the
    /// C locale's point.
    static String valueOf(int value);
    static String valueOf(unsigned int value);
    static String valueOf(long value);
    static String valueOf(unsigned long value);
    static String valueOf(long long value);
    static String valueOf(unsigned long long value);
    static String valueOf(float value);
    static String valueOf(double value);
    static String valueOf(bool value);
    static String valueOf(char16_t value);
    /// A pointer is no truth value.
    static String valueOf(const void*) = delete;

    /// Valid until the text changes.
    std::u16string_view view() const;
    operator std::u16string_view() const { return view(); }
    /// A surrogate without its other half, leading or trailing, throws InvalidCharacterException.
    std::string toUtf8() const;

    friend bool operator==(const String& left, const String& right) { return left.equals(right, false); }
    friend bool operator==(const String& left, const char16_t* right) { return left.equals(right, -1, false); }
    friend bool operator==(const String& left, std::u16string_view right) { return left.view() == right; }
    friend std::strong_ordering operator<=>(const String& left, const String& right)
    {
        return left.compare(right, false) <=> 0;
    }
    friend std::strong_ordering operator<=>(const String& left, const char16_t* right)
    {
        return left.compare(right, -1, false) <=> 0;
    }
    friend std::strong_ordering operator<=>(const String& left, std::u16string_view right)
    {
        return left.view() <=> right;
    }

private:
    friend class detail::PlainBuffer;
    friend class detail::StringReadLock;
    friend class detail::StringSource;
    friend class detail::StringWriteLock;

    /// A write may go ahead in place.
    bool isSoleWriter() const;
    /// `text` lies in the storage that an edit of this string would move.
    bool isOwnText(const char16_t* text) const;
    void splice(int start, int count, const char16_t* text, std::int64_t insert, char16_t fill);
    void internalSetTo(const char* bytes, int length, const char16_t* encoding, int capacity);
    String& setToUtf8(std::string_view bytes);

    Reference<IVXCharBuffer> m_buffer;
    mutable Reference<AnsiBytes> m_ansi;
};

VX_API String operator+(const String& left, const char16_t* right);
VX_API String operator+(const char16_t* left, const String& right);
VX_API String operator+(char16_t left, const String& right);
VX_API String operator+(const String& left, const String& right);

/// Writes UTF-8. Throws only what the stream's own exceptions() asks for: a text that `toUtf8` refuses, and exhaustion, set
/// the stream's badbit.
VX_API std::ostream& operator<<(std::ostream& stream, const String& text);

} // namespace vx

template <>
struct std::hash<vx::String> {
    std::size_t operator()(const vx::String& text) const { return text.hashCode(); }
};
