#pragma once

#include "vx/ComObject.h"
#include "vx/IVXComparable.h"

#include <cstdint>

namespace vx {

class Class;
class String;

namespace detail {

/// The `IVXComparable` view of `Object`. It is a class between the two so that the operations of the view take no slots
/// among those of the class.
class VX_API ComparableFace : public IVXComparable {
public:
    std::int32_t CompareTo(const IVXUnknown* other, int* result) override;
    std::int32_t HashCode(std::uint32_t* result) override;

protected:
    ComparableFace() = default;
    ~ComparableFace() = default;
};

} // namespace detail

/// Root of the class tree. Failures are exceptions. Derived classes append their virtual operations after `toString`.
class VX_API Object : public ComObject, public detail::ComparableFace {
public:
    Object() noexcept = default;
    /// A copy starts with count 0 and no module, and an assignment changes neither.
    Object(const Object&) noexcept
        : ComObject()
        , ComparableFace()
    {
    }
    Object& operator=(const Object&) noexcept { return *this; }

    VX_OBJECT_UNKNOWN(ComObject)
    static const vorb::InterfaceData* GetComIntfMap();

    inline ~Object() noexcept(false) override;

    /// A new object with count 0. Throws CloneNotSupportedException for a class that does not support it; a class that
    /// does supports it for its exact type only.
    virtual Object* clone() const;
    /// Below 0, 0 or above 0. `Object` compares addresses.
    virtual int compareTo(const Object& other) const;
    virtual bool equals(const Object& other) const;
    /// The record of the object's exact type. Not counted. Throws ClassNotFoundException for a type that has none.
    virtual const Class* getClass() const;
    virtual std::uint32_t hashCode() const;
    /// The registered class name, or "Object", an "@" and the hash in hexadecimal.
    virtual String toString() const;
};

Object::~Object() noexcept(false) = default;

} // namespace vx
