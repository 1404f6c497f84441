#include "vx/collections/vorb/HashSet.h"

#include "vx/Exceptions.h"
#include "vx/collections/DefaultComparator.h"
#include "vx/collections/vorb/HashMapIterator.h"
#include "vx/detail/MadeOnce.h"

namespace vx::collections::vorb {

namespace {

constinit vx::detail::MadeOnce<Object> g_present;

/// The value of every element of every set. If there is no memory for it, `element` is released in case it is a new object.
IVXUnknown* presentFor(IVXUnknown* element)
{
    try {
        return g_present.get()->GetUnknown();
    } catch (...) {
        const Reference<IVXUnknown> counted(element);
        throw;
    }
}

} // namespace

HashSet::HashSet()
    : m_map(new HashMap)
{
}

HashSet::HashSet(const IVXComparator* comparator)
    : AbstractSet(comparator)
    , m_map(new HashMap(comparator, GetDefaultComparator().get(), HashMap::DEFAULT_CAPACITY, HashMap::DEFAULT_LOAD))
{
}

HashSet::HashSet(const Collection& other)
    : HashSet()
{
    HashSet::addAll(other);
}

HashSet::HashSet(const Collection& other, const IVXComparator* comparator)
    : HashSet(comparator)
{
    HashSet::addAll(other);
}

HashSet::HashSet(const HashSet& other)
    : Collection()
    , Set()
    , AbstractSet(other)
    , m_map(new HashMap(*other.m_map))
{
}

HashSet::~HashSet() noexcept(false)
{
    if (m_map->GetRefCount() == 1)
        m_map->clear(); // while the set is consistent: destructors of elements may use it
}

bool HashSet::add(IVXUnknown* element)
{
    return m_map->put(element, presentFor(element)) == nullptr;
}

void HashSet::clear()
{
    m_map->clear();
}

bool HashSet::contains(const IVXUnknown* element) const
{
    return m_map->containsKey(element);
}

Reference<Iterator> HashSet::createIterator()
{
    return new HashMapIterator(m_map.get(), HashMapIterator::KEYS);
}

Reference<ConstIterator> HashSet::createConstIterator() const
{
    return new HashMapIterator(m_map.get(), HashMapIterator::KEYS);
}

int HashSet::getSize() const
{
    return m_map->getSize();
}

bool HashSet::remove(const IVXUnknown* element)
{
    return m_map->remove(element) != nullptr;
}

int HashSet::compareTo(const Object& other) const
{
    if (&other == this)
        return 0;
    const auto* set = dynamic_cast<const HashSet*>(&other);
    if (set == nullptr)
        throw CastFailedException();
    return m_map->compareTo(*set->m_map);
}

bool HashSet::equals(const Object& other) const
{
    return compareTo(other) == 0;
}

std::uint32_t HashSet::hashCode() const
{
    return m_map->hashCode();
}

} // namespace vx::collections::vorb
