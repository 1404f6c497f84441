#include "vx/collections/vorb/HashMapEntry.h"

#include <utility>

namespace vx::collections::vorb {

HashMapEntry::~HashMapEntry() noexcept(false) = default;

int HashMapEntry::compareTo(const Object&) const
{
    return 0;
}

bool HashMapEntry::equals(const Object&) const
{
    return true;
}

Reference<IVXUnknown> HashMapEntry::getKey() const
{
    return m_key;
}

Reference<IVXUnknown> HashMapEntry::getValue() const
{
    return m_value;
}

std::uint32_t HashMapEntry::hashCode() const
{
    return 0;
}

Reference<IVXUnknown> HashMapEntry::setValue(IVXUnknown* value)
{
    return std::exchange(m_value, Reference<IVXUnknown>(value));
}

} // namespace vx::collections::vorb
