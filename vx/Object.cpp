#include "vx/Object.h"

#include "vx/Class.h"
#include "vx/Exceptions.h"
#include "vx/vorb/Boundary.h"
#include "vxsys/Number.h"

#include <functional>
#include <typeinfo>

namespace vx {

namespace {

/// 1, -1 or 0 if `left` is above, below or at `right`.
int compareAddresses(const void* left, const void* right) noexcept
{
    if (left == right)
        return 0;
    return std::less<>()(right, left) ? 1 : -1;
}

/// Null for an element that is no Object. Two objects of one class have their Object at the same place, which is faster
/// to find than by a cast.
const Object* objectOf(const IVXUnknown* element, const Object& self) noexcept
{
    if (element == nullptr || &typeid(*element) != &typeid(self))
        return dynamic_cast<const Object*>(element);
    const auto place
        = reinterpret_cast<const char*>(&self) - static_cast<const char*>(dynamic_cast<const void*>(&self));
    return reinterpret_cast<const Object*>(static_cast<const char*>(dynamic_cast<const void*>(element)) + place);
}

} // namespace

namespace detail {

std::int32_t ComparableFace::CompareTo(const IVXUnknown* other, int* result)
{
    const auto& self = static_cast<const Object&>(*this);
    return vorb::atBoundary(result, [&] {
        if (const Object* object = objectOf(other, self))
            return self.compareTo(*object);
        // Objects of other roots are ordered by address, as seen from the other object.
        return compareAddresses(other, &self);
    });
}

std::int32_t ComparableFace::HashCode(std::uint32_t* result)
{
    return vorb::atBoundary(result, [&] { return static_cast<const Object&>(*this).hashCode(); });
}

} // namespace detail

const vorb::InterfaceData* Object::GetComIntfMap()
{
    static const vorb::InterfaceData map[] = {vorb::viewRow<Object, IVXComparable>(), vorb::endRow()};
    return map;
}

Object* Object::clone() const
{
    if (typeid(*this) != typeid(Object))
        throw CloneNotSupportedException();
    return new Object;
}

int Object::compareTo(const Object& other) const
{
    return compareAddresses(this, &other);
}

bool Object::equals(const Object& other) const
{
    return this == &other;
}

const Class* Object::getClass() const
{
    return Class::forType(&typeid(*this));
}

std::uint32_t Object::hashCode() const
{
    return static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(this));
}

String Object::toString() const
{
    char16_t digits[34];
    VXLToStrW(static_cast<std::int32_t>(hashCode()), digits, 16);
    String text = u'@' + String(digits);
    try {
        text.prepend(getClass()->getName());
    } catch (...) { // a class that is not registered
        text.prepend(u"Object");
    }
    return text;
}

} // namespace vx
