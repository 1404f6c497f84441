#pragma once

#include "vx/Number.h"

#include <cstdint>

namespace vx {

/// A box: one primitive number as an object. Made from another number or a text it truncates in silence; only the boxes
/// of 64 bits refuse a text. `compareTo` first converts the other number to the box's own type, so that it is not
/// symmetric: an Integer8 of 1 equals an Integer32 of 257. The narrow boxes give the difference of the two values. An
/// object that is no Number throws CastFailedException.
class VX_API Integer8 : public SignedInteger {
public:
    explicit Integer8(signed char value) noexcept
        : m_value(value)
    {
    }
    Integer8(const Integer8&) noexcept = default;
    explicit Integer8(const Number& other);
    Integer8(const String& text);
    ~Integer8() noexcept override;

    Integer8& operator=(const Integer8&) noexcept = default;
    Integer8& operator=(signed char value) noexcept
    {
        m_value = value;
        return *this;
    }
    operator signed char() const noexcept { return m_value; }

    // Object
    int compareTo(const Object& other) const override;
    String toString() const override;

    // Number
    std::int64_t toInt64() const override;
    double toDouble() const override;

    int compareTo(const Number& other) const;

private:
    signed char m_value;
};

/// As Integer8, for `short`.
class VX_API Integer16 : public SignedInteger {
public:
    explicit Integer16(short value) noexcept
        : m_value(value)
    {
    }
    Integer16(const Integer16&) noexcept = default;
    explicit Integer16(const Number& other);
    Integer16(const String& text);
    ~Integer16() noexcept override;

    Integer16& operator=(const Integer16&) noexcept = default;
    Integer16& operator=(short value) noexcept
    {
        m_value = value;
        return *this;
    }
    operator short() const noexcept { return m_value; }

    // Object
    int compareTo(const Object& other) const override;
    String toString() const override;

    // Number
    std::int64_t toInt64() const override;
    double toDouble() const override;

    int compareTo(const Number& other) const;

private:
    short m_value;
};

/// As Integer8, for 32 bits.
class VX_API Integer32 : public SignedInteger {
public:
    explicit Integer32(std::int32_t value) noexcept
        : m_value(value)
    {
    }
    Integer32(const Integer32&) noexcept = default;
    explicit Integer32(const Number& other);
    Integer32(const String& text);
    ~Integer32() noexcept override;

    Integer32& operator=(const Integer32&) noexcept = default;
    Integer32& operator=(std::int32_t value) noexcept
    {
        m_value = value;
        return *this;
    }
    operator std::int32_t() const noexcept { return m_value; }

    // Object
    int compareTo(const Object& other) const override;
    String toString() const override;

    // Number
    std::int64_t toInt64() const override;
    double toDouble() const override;

    /// The difference in 32 bits, which wraps around.
    int compareTo(const Number& other) const;

private:
    std::int32_t m_value;
};

/// As Integer8, for 64 bits.
class VX_API Integer64 : public SignedInteger {
public:
    explicit Integer64(std::int64_t value) noexcept
        : m_value(value)
    {
    }
    Integer64(const Integer64&) noexcept = default;
    explicit Integer64(const Number& other);
    /// As Number::parseInt64, failures included.
    Integer64(const String& text);
    ~Integer64() noexcept override;

    Integer64& operator=(const Integer64&) noexcept = default;
    Integer64& operator=(std::int64_t value) noexcept
    {
        m_value = value;
        return *this;
    }
    operator std::int64_t() const noexcept { return m_value; }

    // Object
    int compareTo(const Object& other) const override;

    // Number
    std::int64_t toInt64() const override;
    double toDouble() const override;

    /// -1, 0 or 1.
    int compareTo(const Number& other) const;

private:
    std::int64_t m_value;
};

/// As Integer8, for `unsigned char`.
class VX_API UInteger8 : public UnsignedInteger {
public:
    explicit UInteger8(unsigned char value) noexcept
        : m_value(value)
    {
    }
    UInteger8(const UInteger8&) noexcept = default;
    explicit UInteger8(const Number& other);
    UInteger8(const String& text);
    ~UInteger8() noexcept override;

    UInteger8& operator=(const UInteger8&) noexcept = default;
    UInteger8& operator=(unsigned char value) noexcept
    {
        m_value = value;
        return *this;
    }
    operator unsigned char() const noexcept { return m_value; }

    // Object
    int compareTo(const Object& other) const override;
    using UnsignedInteger::toString;
    String toString() const override;

    // Number
    std::int64_t toInt64() const override;
    double toDouble() const override;

    int compareTo(const Number& other) const;

private:
    unsigned char m_value;
};

/// As Integer8, for `unsigned short`.
class VX_API UInteger16 : public UnsignedInteger {
public:
    explicit UInteger16(unsigned short value) noexcept
        : m_value(value)
    {
    }
    UInteger16(const UInteger16&) noexcept = default;
    explicit UInteger16(const Number& other);
    UInteger16(const String& text);
    ~UInteger16() noexcept override;

    UInteger16& operator=(const UInteger16&) noexcept = default;
    UInteger16& operator=(unsigned short value) noexcept
    {
        m_value = value;
        return *this;
    }
    operator unsigned short() const noexcept { return m_value; }

    // Object
    int compareTo(const Object& other) const override;
    using UnsignedInteger::toString;
    String toString() const override;

    // Number
    std::int64_t toInt64() const override;
    double toDouble() const override;

    int compareTo(const Number& other) const;

private:
    unsigned short m_value;
};

/// As Integer8, for 32 bits without a sign.
class VX_API UInteger32 : public UnsignedInteger {
public:
    explicit UInteger32(std::uint32_t value) noexcept
        : m_value(value)
    {
    }
    UInteger32(const UInteger32&) noexcept = default;
    explicit UInteger32(const Number& other);
    UInteger32(const String& text);
    ~UInteger32() noexcept override;

    UInteger32& operator=(const UInteger32&) noexcept = default;
    UInteger32& operator=(std::uint32_t value) noexcept
    {
        m_value = value;
        return *this;
    }
    operator std::uint32_t() const noexcept { return m_value; }

    // Object
    int compareTo(const Object& other) const override;
    using UnsignedInteger::toString;
    String toString() const override;

    // Number
    std::int64_t toInt64() const override;
    double toDouble() const override;

    /// The difference in 32 bits, which wraps around.
    int compareTo(const Number& other) const;

private:
    std::uint32_t m_value;
};

/// As Integer8, for 64 bits without a sign.
class VX_API UInteger64 : public UnsignedInteger {
public:
    explicit UInteger64(std::uint64_t value) noexcept
        : m_value(value)
    {
    }
    UInteger64(const UInteger64&) noexcept = default;
    explicit UInteger64(const Number& other);
    /// As Number::parseUInt64, failures included.
    UInteger64(const String& text);
    ~UInteger64() noexcept override;

    UInteger64& operator=(const UInteger64&) noexcept = default;
    UInteger64& operator=(std::uint64_t value) noexcept
    {
        m_value = value;
        return *this;
    }
    operator std::uint64_t() const noexcept { return m_value; }

    // Object
    int compareTo(const Object& other) const override;

    // Number
    /// The same bits.
    std::int64_t toInt64() const override;
    /// Of the low 63 bits, as BigInteger converts them.
    double toDouble() const override;

    /// -1, 0 or 1.
    int compareTo(const Number& other) const;

private:
    std::uint64_t m_value;
};

/// As Integer8, for `float`.
class VX_API Float : public Number {
public:
    explicit Float(float value) noexcept
        : m_value(value)
    {
    }
    Float(const Float&) noexcept = default;
    explicit Float(const Number& other);
    Float(const String& text);
    ~Float() noexcept override;

    Float& operator=(const Float&) noexcept = default;
    Float& operator=(float value) noexcept
    {
        m_value = value;
        return *this;
    }
    operator float() const noexcept { return m_value; }

    // Object
    int compareTo(const Object& other) const override;
    /// Six significant digits, in the shorter form ("%g").
    String toString() const override;

    // Number
    /// Truncated toward zero and clipped to the range; 0 for a NaN.
    std::int64_t toInt64() const override;
    double toDouble() const override;

    /// -1, 0 or 1; a NaN on either side gives 1.
    int compareTo(const Number& other) const;

private:
    float m_value;
};

/// As Integer8, for `double`.
class VX_API Double : public Number {
public:
    explicit Double(double value) noexcept
        : m_value(value)
    {
    }
    Double(const Double&) noexcept = default;
    explicit Double(const Number& other);
    Double(const String& text);
    ~Double() noexcept override;

    Double& operator=(const Double&) noexcept = default;
    Double& operator=(double value) noexcept
    {
        m_value = value;
        return *this;
    }
    operator double() const noexcept { return m_value; }

    // Object
    int compareTo(const Object& other) const override;
    /// Six significant digits, in the shorter form ("%g").
    String toString() const override;

    // Number
    /// Truncated toward zero and clipped to the range; 0 for a NaN.
    std::int64_t toInt64() const override;
    double toDouble() const override;

    /// -1, 0 or 1; a NaN on either side gives 1.
    int compareTo(const Number& other) const;

private:
    double m_value;
};

} // namespace vx
