#pragma once

#include "vx/Reference.h"
#include "vx/StringLiteral.h"
#include "vx/detail/FormatConcepts.h"
#include "vx/detail/FormatPattern.h"
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
#include <type_traits>

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
/// String name = u"Grüße"; // or u8"Grüße"
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

    /// How a source is used. Any other value is AcquireCopy.
    enum AcquireMode : int {
        AcquireCopy = 0,
        AcquireShare = 1, ///< shares the buffer of the source; a text without a buffer is copied
        AcquireWrap = 2, ///< uses the text of the source in place: it must outlive this string and all that share it
        AcquireUpper = 3 ///< a copy in upper case
    };

    /// Bits for the ends of the text that `trim` works on.
    enum TrimType { TrimLeading = 1, TrimTrailing = 2, TrimBoth = 3 };

    String();
    /// Shares the buffer of `other`.
    String(const String& other) noexcept;
    /// An empty text with room for `capacity` units.
    explicit String(int capacity);
    String(const char16_t* text, int length = -1, int capacity = 0);
    explicit String(char16_t ch, int count = 1, int capacity = 0);
    String(const STRUCT_VX_STR_LIT_INFO& literal);
    /// Copies the text under the read lock of `buffer`.
    explicit String(util::ICharBuffer* buffer);
    /// A range of `other`. AcquireShare shares the whole buffer. A wrapped range need not end with a zero unit.
    String(AcquireMode mode, const String& other, int start = 0, int end = -1, int capacity = 0);
    /// AcquireWrap needs a zero unit at `text[length]`.
    String(AcquireMode mode, const char16_t* text, int length = -1, int capacity = 0);
    /// AcquireShare uses `buffer` itself, and its length must include a terminator. The other modes read it as text
    /// without a terminator.
    String(AcquireMode mode, util::ICharBuffer* buffer);
    /// A mode is not a length: it must be the first argument.
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
    /// A character or a bool is not a capacity.
    explicit String(bool) = delete;
    explicit String(char) = delete;
    explicit String(wchar_t) = delete;
    explicit String(char8_t) = delete;
    explicit String(char32_t) = delete;
    String(std::nullptr_t) = delete;

    /// These return what the constructors with the same arguments make.
    static String CVXString(const String& other);
    static String CVXString(const char16_t* text, int length = -1, int capacity = 0);
    static String CVXString(const char* bytes, int length = -1, const char16_t* encoding = nullptr, int capacity = 0);

    ~String() noexcept override;

    /// Copies the text; the two strings do not share.
    String& operator=(const String& other);
    /// Takes over the buffer of `other` if only `other` uses it and neither buffer was adopted; otherwise copies the text.
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

    // AbstractCharBuffer: lengths do not include the terminator. A write first copies a buffer that is shared or
    // read-only, so every string is writable. Each lock must be released.
    int getLength() const override;
    const char16_t* getData() const override;
    const char16_t* getReadLock() const override;
    void releaseReadLock() const override;
    bool isWritable() const override;
    char16_t* getWriteLock(int minimumLength) override;
    /// Grows the buffer, which must already be under the write lock.
    char16_t* ensureCapacity(int minimumLength) override;
    /// Writes the terminator. A `length` of -1 measures the text.
    void releaseWriteLock(int length) override;
    /// Does nothing to a buffer that other strings share.
    void freeExtra() override;

    /// The type of `width` chooses the width of the text; its value has no effect.
    const char16_t* getDataT(int width) const;
    const char* getDataT(bool width) const;
    const char16_t* getReadLockT(int width) const;
    const char* getReadLockT(bool width) const;

    /// Makes the buffer writable and not shared, with room for `capacity` units, the terminator included.
    void copyOnWrite(int capacity);

    /// The encoded text, zero-terminated. It is valid until the text changes or another encoding is requested.
    const char* getBytes(const char16_t* encoding = nullptr) const;
    const char* getBytes(std::nullptr_t) const { return getBytes(); }
    /// As above, under the read lock. `releaseReadLock` ends it.
    const char* getBytesReadLock(const char16_t* encoding = nullptr) const;
    void getBytes(util::IByteBuffer* out, const char16_t* encoding = nullptr) const;
    /// Returns the number of bytes written. They include the terminator if there is room for it. Only whole characters
    /// are written. The bytes of the array after them have no meaning.
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
    /// Reads at most 63 units of the text.
    std::uint32_t hashCode(bool ignoreCase) const;
    String toString() const override;

    /// Replaces `count` units from `start` on by `text` from `textStart` on. All other changes of the text are made of
    /// this one.
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
    /// Truncates the text, or appends `fill` to it.
    void resize(int length, char16_t fill);
    /// Keeps the buffer and its capacity.
    void clear();
    void setCharAt(int index, char16_t ch);
    /// Replaces every unit `from` by `to`.
    void translate(char16_t from, char16_t to);
    /// These three exist for compatibility and do not change the text.
    void translate(const char16_t* from, int fromLength, const char16_t* to, int toLength);
    void translate(const char16_t* from, const char16_t* to);
    void translate(const String& from, const String& to);
    void toLower();
    void toUpper();
    /// Removes space, tab, carriage return and line feed from the ends.
    void trim(TrimType type = TrimBoth);
    void trim(char16_t ch, TrimType type = TrimBoth);
    /// `set` ends at its zero unit, whatever `length` is. That zero unit is part of the set: zero units are trimmed
    /// too.
    void trim(const char16_t* set, int length = -1, TrimType type = TrimBoth);
    void trim(const char16_t* set, TrimType type) { trim(set, -1, type); }
    void trim(const String& set, TrimType type = TrimBoth);

    /// A copy of the units from `start` up to, but not including, `end`. Both are limited to the text.
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
    /// Compares by unit value. If one text is a prefix of the other, it is below, and the result is the difference of
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
    /// Deleted, here and below: a bool in the place of a length or a position.
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

    /// Searches return a position or -1. An empty pattern or set is never found. The match of a backward search ends at
    /// or before `from`.
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

    /// Replaces the text by the template `format`, with `{0}`, `{1}`, ... filled from zero-terminated UTF-16 arguments
    /// (`const char16_t*`). Arguments are read in order, as long as the next number occurs in the template.
    /// Placeholders in inserted text are not replaced.
    const String& format(const char16_t* format, int length, ...);
    const String& format(String format, ...);
    const String& formatv(const char16_t* format, int length, std::va_list arguments);
    const String& formatv(String format, std::va_list arguments);
    /// The same for arguments of other types, which the compiler checks: texts of every kind (narrow ones in UTF-8),
    /// numbers and booleans as `valueOf` prints them, characters, and objects with `toString`, also by reference or
    /// pointer ("null" for a null one). Placeholders without an argument stay in the text.
    /// @code
    /// const String name(u"Ada");
    /// assert(String().format(u"{0} has {1} of {2}", -1, name, 3, 4.5) == u"Ada has 3 of 4.5");
    /// @endcode
    template <class... Arguments>
    requires detail::CheckedFormatArguments<Arguments...>
    const String& format(const char16_t* format, int length, const Arguments&... arguments);
    template <class Form, class First, class... Others>
    requires detail::CheckedFormatArguments<First, Others...> && detail::FormatOfAnyText<Form, First>
    const String& format(const Form& format, const First& first, const Others&... others);
    /// A new text, made in the same way from any number of arguments. Here no argument is a length: use this form unless the
    /// template has one. In `format(u"{0} cats", 42)` the 42 is the length of the template. The compiler refuses a literal
    /// template whose numbers have no argument or a gap. A named array of char16_t has to be static for that, or is passed
    /// as a std::u16string_view.
    /// @code
    /// assert(String::formatted(u"{1} has {0} cats", 42, u"Ada") == u"Ada has 42 cats");
    /// @endcode
    template <class... Arguments>
    static String formatted(
        std::type_identity_t<detail::FormatPattern<sizeof...(Arguments)>> form, const Arguments&... arguments);

    /// Integers are decimal. Floating-point numbers have six significant digits in the shorter form ("%g"), with the
    /// point of the C locale.
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
    /// A pointer is not a bool.
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

    /// Whether the text may be changed in place.
    bool isSoleWriter() const;
    /// `text` is in the storage that an edit of this string would move.
    bool isOwnText(const char16_t* text) const;
    void splice(int start, int count, const char16_t* text, std::int64_t insert, char16_t fill);
    const String& formatChecked(
        const char16_t* format, int length, const detail::FormatArgument* arguments, std::size_t count);
    void internalSetTo(const char* bytes, int length, const char16_t* encoding, int capacity);
    String& setToUtf8(std::string_view bytes);

    Reference<IVXCharBuffer> m_buffer;
    mutable Reference<AnsiBytes> m_ansi;
};

VX_API String operator+(const String& left, const char16_t* right);
VX_API String operator+(const char16_t* left, const String& right);
VX_API String operator+(char16_t left, const String& right);
VX_API String operator+(const String& left, const String& right);

/// Writes UTF-8. If `toUtf8` throws or memory is exhausted, sets the badbit of the stream, and throws only if the
/// stream's exceptions() ask for that.
VX_API std::ostream& operator<<(std::ostream& stream, const String& text);

} // namespace vx

namespace vx::detail {

template <class T>
concept HasText = requires(const T& value)
{
    {
        value.toString()
        } -> std::convertible_to<String>;
};

/// A `Reference` or a pointer to an object.
template <class T>
concept LeadsToText = requires(const T& pointer)
{
    {
        *pointer
        } -> HasText;
    {
        pointer == nullptr
        } -> std::convertible_to<bool>;
};

/// An argument of `String::format` as text. It refers to texts of the caller, so it is only valid during the call.
class VX_API FormatArgument {
public:
    template <class T>
    explicit FormatArgument(const T& value);
    FormatArgument(const FormatArgument&) = delete;
    FormatArgument& operator=(const FormatArgument&) = delete;

    std::u16string_view view() const noexcept { return m_view; }

private:
    void keep(const String& text);
    void set(std::int64_t number);
    void set(std::uint64_t number);
    void set(double number);
    template <class... Number>
    void print(Number... number);

    static constexpr std::size_t ROOM = 32; ///< for the digits of any number

    std::u16string_view m_view;
    String m_kept;
    char16_t m_units[ROOM];
};

template <class T>
FormatArgument::FormatArgument(const T& value)
{
    if constexpr (std::same_as<T, bool>) {
        m_view = value ? u"true" : u"false";
    } else if constexpr (std::same_as<T, char16_t>) {
        m_units[0] = value;
        m_view = {m_units, 1};
    } else if constexpr (std::same_as<T, char>) {
        keep(String(std::string_view(&value, 1)));
    } else if constexpr (
        std::integral<T> && !std::same_as<T, char8_t> && !std::same_as<T, char32_t> && !std::same_as<T, wchar_t>) {
        set(static_cast<std::conditional_t<std::is_signed_v<T>, std::int64_t, std::uint64_t>>(value));
    } else if constexpr (std::floating_point<T>) {
        set(static_cast<double>(value));
    } else if constexpr (std::same_as<T, std::nullptr_t>) {
        m_view = {};
    } else if constexpr (std::convertible_to<const T&, const char16_t*>) {
        const char16_t* const text = value;
        m_view = text != nullptr ? std::u16string_view(text) : std::u16string_view();
    } else if constexpr (std::derived_from<T, String>) {
        keep(value);
    } else if constexpr (std::convertible_to<const T&, std::u16string_view>) {
        m_view = value;
    } else if constexpr (std::convertible_to<const T&, const char*>) {
        const char* const text = value;
        keep(String(text != nullptr ? std::string_view(text) : std::string_view()));
    } else if constexpr (std::convertible_to<const T&, std::string_view>) {
        keep(String(std::string_view(value)));
    } else if constexpr (std::convertible_to<const T&, std::u8string_view>) {
        keep(String(std::u8string_view(value)));
    } else if constexpr (HasText<T>) {
        keep(value.toString());
    } else if constexpr (LeadsToText<T>) {
        if (value == nullptr)
            m_view = u"null";
        else
            keep((*value).toString());
    } else {
        static_assert(sizeof(T) == 0, "String::format takes texts, numbers, booleans and objects with toString");
    }
}

} // namespace vx::detail

namespace vx {

template <class... Arguments>
requires detail::CheckedFormatArguments<Arguments...>
const String& String::format(const char16_t* format, int length, const Arguments&... arguments)
{
    const detail::FormatArgument texts[] {detail::FormatArgument(arguments)...};
    return formatChecked(format, length, texts, sizeof...(arguments));
}

template <class... Arguments>
String String::formatted(
    std::type_identity_t<detail::FormatPattern<sizeof...(Arguments)>> form, const Arguments&... arguments)
{
    String text;
    const std::u16string_view pattern = form.view();
    if constexpr (sizeof...(arguments) == 0) {
        text = pattern;
    } else {
        const detail::FormatArgument texts[] {detail::FormatArgument(arguments)...};
        text.formatChecked(pattern.data(), static_cast<int>(pattern.size()), texts, sizeof...(arguments));
    }
    return text;
}

template <class Form, class First, class... Others>
requires detail::CheckedFormatArguments<First, Others...> && detail::FormatOfAnyText<Form, First>
const String& String::format(const Form& format, const First& first, const Others&... others)
{
    const String held(format); // which keeps the text if it is that of this string
    const detail::FormatArgument texts[] {detail::FormatArgument(first), detail::FormatArgument(others)...};
    return formatChecked(held.getData(), held.getLength(), texts, 1 + sizeof...(others));
}

} // namespace vx

template <>
struct std::hash<vx::String> {
    std::size_t operator()(const vx::String& text) const { return text.hashCode(); }
};
