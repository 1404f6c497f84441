#pragma once

#include "vx/Number.h"

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string_view>

namespace vx {

namespace detail {

/// A box: one primitive number as an object. A box that is made from another number or from a text truncates silently;
/// only the boxes of 64 bits refuse a text. `compareTo` first converts the other number to the type of the box. So it
/// is not symmetric: an Integer8 of 1 equals an Integer32 of 257. An object that is no Number throws
/// CastFailedException.
template <class Base, class Value>
class VX_API NumberBox : public Base {
public:
    explicit NumberBox(Value value) noexcept
        : m_value(value)
    {
    }
    NumberBox(const NumberBox&) noexcept = default;
    explicit NumberBox(const Number& other);
    NumberBox(const String& text);
    ~NumberBox() noexcept override;

    /// Parses the whole text. Empty for any other text, also with blanks around the number or a plus sign before it,
    /// and for a number out of range. `radix` is 2 to 36; another throws RangeErrorException.
    static std::optional<Value> tryParse(std::u16string_view text, int radix = 10) requires std::integral<Value>;
    /// The number may have a point and an exponent. It is neither infinite nor NaN.
    static std::optional<Value> tryParse(std::u16string_view text) requires std::floating_point<Value>;

    NumberBox& operator=(const NumberBox&) noexcept = default;
    operator Value() const noexcept { return m_value; }

    // Object
    int compareTo(const Object& other) const override;
    using Base::toString;
    /// Floating-point boxes print six significant digits, in the shorter form ("%g").
    String toString() const override;

    // Number
    /// Of floating point: truncated toward zero and clipped to the range, 0 for a NaN. Of 64 bits without a sign: the same
    /// bits.
    std::int64_t toInt64() const override;
    /// For 64 bits without a sign, the low 63 bits, as BigInteger converts them.
    double toDouble() const override;

    /// The difference for boxes of up to 16 bits, and for 32 bits, where it wraps around in 32 bits. For all others -1,
    /// 0 or 1, and 1 if either value is a NaN.
    int compareTo(const Number& other) const;

protected:
    Value m_value;
};

template <class Base, class Value>
Value isBox(const NumberBox<Base, Value>&);

/// A class made from NumberBox. Its values compare as the plain numbers do to which they convert.
template <class T>
concept Box = requires(const T& box)
{
    detail::isBox(box);
};

extern template class VX_API NumberBox<SignedInteger, signed char>;
extern template class VX_API NumberBox<SignedInteger, short>;
extern template class VX_API NumberBox<SignedInteger, std::int32_t>;
extern template class VX_API NumberBox<SignedInteger, std::int64_t>;
extern template class VX_API NumberBox<UnsignedInteger, unsigned char>;
extern template class VX_API NumberBox<UnsignedInteger, unsigned short>;
extern template class VX_API NumberBox<UnsignedInteger, std::uint32_t>;
extern template class VX_API NumberBox<UnsignedInteger, std::uint64_t>;
extern template class VX_API NumberBox<Number, float>;
extern template class VX_API NumberBox<Number, double>;

} // namespace detail

/// The box of 8 bits.
class VX_API Integer8 : public detail::NumberBox<SignedInteger, signed char> {
public:
    using NumberBox::NumberBox;
    Integer8(const Integer8&) noexcept = default;
    ~Integer8() noexcept override;

    Integer8& operator=(const Integer8&) noexcept = default;
    Integer8& operator=(signed char value) noexcept
    {
        m_value = value;
        return *this;
    }
};

/// The box of 16 bits.
class VX_API Integer16 : public detail::NumberBox<SignedInteger, short> {
public:
    using NumberBox::NumberBox;
    Integer16(const Integer16&) noexcept = default;
    ~Integer16() noexcept override;

    Integer16& operator=(const Integer16&) noexcept = default;
    Integer16& operator=(short value) noexcept
    {
        m_value = value;
        return *this;
    }
};

/// The box of 32 bits.
class VX_API Integer32 : public detail::NumberBox<SignedInteger, std::int32_t> {
public:
    using NumberBox::NumberBox;
    Integer32(const Integer32&) noexcept = default;
    ~Integer32() noexcept override;

    Integer32& operator=(const Integer32&) noexcept = default;
    Integer32& operator=(std::int32_t value) noexcept
    {
        m_value = value;
        return *this;
    }
};

/// The box of 64 bits.
class VX_API Integer64 : public detail::NumberBox<SignedInteger, std::int64_t> {
public:
    using NumberBox::NumberBox;
    Integer64(const Integer64&) noexcept = default;
    ~Integer64() noexcept override;

    Integer64& operator=(const Integer64&) noexcept = default;
    Integer64& operator=(std::int64_t value) noexcept
    {
        m_value = value;
        return *this;
    }
};

/// The box of 8 bits without a sign.
class VX_API UInteger8 : public detail::NumberBox<UnsignedInteger, unsigned char> {
public:
    using NumberBox::NumberBox;
    UInteger8(const UInteger8&) noexcept = default;
    ~UInteger8() noexcept override;

    UInteger8& operator=(const UInteger8&) noexcept = default;
    UInteger8& operator=(unsigned char value) noexcept
    {
        m_value = value;
        return *this;
    }
};

/// The box of 16 bits without a sign.
class VX_API UInteger16 : public detail::NumberBox<UnsignedInteger, unsigned short> {
public:
    using NumberBox::NumberBox;
    UInteger16(const UInteger16&) noexcept = default;
    ~UInteger16() noexcept override;

    UInteger16& operator=(const UInteger16&) noexcept = default;
    UInteger16& operator=(unsigned short value) noexcept
    {
        m_value = value;
        return *this;
    }
};

/// The box of 32 bits without a sign.
class VX_API UInteger32 : public detail::NumberBox<UnsignedInteger, std::uint32_t> {
public:
    using NumberBox::NumberBox;
    UInteger32(const UInteger32&) noexcept = default;
    ~UInteger32() noexcept override;

    UInteger32& operator=(const UInteger32&) noexcept = default;
    UInteger32& operator=(std::uint32_t value) noexcept
    {
        m_value = value;
        return *this;
    }
};

/// The box of 64 bits without a sign.
class VX_API UInteger64 : public detail::NumberBox<UnsignedInteger, std::uint64_t> {
public:
    using NumberBox::NumberBox;
    UInteger64(const UInteger64&) noexcept = default;
    ~UInteger64() noexcept override;

    UInteger64& operator=(const UInteger64&) noexcept = default;
    UInteger64& operator=(std::uint64_t value) noexcept
    {
        m_value = value;
        return *this;
    }
};

/// The box of `float`.
class VX_API Float : public detail::NumberBox<Number, float> {
public:
    using NumberBox::NumberBox;
    Float(const Float&) noexcept = default;
    ~Float() noexcept override;

    Float& operator=(const Float&) noexcept = default;
    Float& operator=(float value) noexcept
    {
        m_value = value;
        return *this;
    }
};

/// The box of `double`.
class VX_API Double : public detail::NumberBox<Number, double> {
public:
    using NumberBox::NumberBox;
    Double(const Double&) noexcept = default;
    ~Double() noexcept override;

    Double& operator=(const Double&) noexcept = default;
    Double& operator=(double value) noexcept
    {
        m_value = value;
        return *this;
    }
};

} // namespace vx

/// Of the whole number: `hashCode` has only 32 bits of the integer part.
template <vx::detail::Box Box>
struct std::hash<Box> {
    std::size_t operator()(const Box& box) const
    {
        using Value = decltype(vx::detail::isBox(box));
        return std::hash<Value>()(static_cast<Value>(box));
    }
};
