#pragma once

#include "vx/IVXComparator.h"
#include "vx/Object.h"

#include <cstdint>

namespace vx::util {

/// The `IVXComparator` view of `Comparator`.
class VX_API ComparatorFace : public IVXComparator {
public:
    std::int32_t Compare(const IVXUnknown* a, const IVXUnknown* b, int* result) const override;
    std::int32_t Hash(const IVXUnknown* a, std::uint32_t* result) const override;

protected:
    ComparatorFace() = default;
    ~ComparatorFace() = default;
};

/// Compares and hashes components by their `IVXComparable`. A component without that interface is treated as null: its
/// hash is 0, and it sorts before all others except null. The first element of `Compare` gets a reference for a moment, so
/// it must not be on the stack. A key that is only hashed or looked up may be.
class VX_API Comparator : public Object, public ComparatorFace {
public:
    Comparator() noexcept = default;
    Comparator(const Comparator& other) noexcept = default;
    Comparator& operator=(const Comparator&) noexcept { return *this; }
    ~Comparator() noexcept(false) override;

    VX_OBJECT_UNKNOWN(Object)
    static const vorb::InterfaceData* GetComIntfMap();

    // Object
    Object* clone() const override;
    /// 0 for an object of the same dynamic type; CastFailedException for any other.
    int compareTo(const Object& other) const override;
    /// True for an object of the same dynamic type.
    bool equals(const Object& other) const override;

    virtual int compare(const Object& a, const Object& b) const;
    virtual std::uint32_t hash(const Object& a) const;
};

} // namespace vx::util
