#include "vx/util/Comparator.h"

#include "vx/Exceptions.h"
#include "vx/IVXComparable.h"
#include "vx/Reference.h"
#include "vx/Result.h"

#include <typeinfo>

namespace vx::util {

namespace {

/// Null for a null element and for one without the interface. The query does not change the element.
Reference<IVXComparable> asComparable(const IVXUnknown* element)
{
    return Reference<IVXComparable>(const_cast<IVXUnknown*>(element));
}

} // namespace

std::int32_t ComparatorFace::Compare(const IVXUnknown* a, const IVXUnknown* b, int* result) const
{
    if (result == nullptr)
        return RESULT_POINTER;
    *result = 0;
    if (const Reference<IVXComparable> left = asComparable(a))
        return left->CompareTo(b, result);
    *result = b != nullptr ? -1 : 0;
    return RESULT_OK;
}

std::int32_t ComparatorFace::Hash(const IVXUnknown* a, std::uint32_t* result) const
{
    if (result == nullptr)
        return RESULT_POINTER;
    *result = 0;
    // A key that a map looks up may be on the stack, where the end of a reference would destroy it.
    const auto* object = dynamic_cast<const Object*>(a);
    if (object != nullptr && object->GetRefCount() == 0)
        return const_cast<Object*>(object)->HashCode(result);
    if (const Reference<IVXComparable> element = asComparable(a))
        return element->HashCode(result);
    return RESULT_OK;
}

Comparator::~Comparator() noexcept(false) = default;

const vorb::InterfaceData* Comparator::GetComIntfMap()
{
    static const vorb::InterfaceData map[]
        = {vorb::viewRow<Comparator, IVXComparator>(), vorb::forwardRow<Object>(), vorb::endRow()};
    return map;
}

Object* Comparator::clone() const
{
    if (typeid(*this) != typeid(Comparator))
        throw CloneNotSupportedException();
    return new Comparator;
}

int Comparator::compareTo(const Object& other) const
{
    if (!Comparator::equals(other))
        throw CastFailedException();
    return 0;
}

bool Comparator::equals(const Object& other) const
{
    return typeid(*this) == typeid(other);
}

int Comparator::compare(const Object& a, const Object& b) const
{
    return a.compareTo(b);
}

std::uint32_t Comparator::hash(const Object& a) const
{
    return a.hashCode();
}

} // namespace vx::util
