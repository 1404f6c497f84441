#include "vx/collections/IntegerHashMap.h"

#include "vx/NumberBoxes.h"
#include "vx/collections/Set.h"
#include "vx/collections/vorb/HashSet.h"

#include <utility>

namespace vx::collections {

namespace {

std::uint32_t hashOf(int key) noexcept
{
    return static_cast<std::uint32_t>(key);
}

} // namespace

int IntegerHashMap::calcCapacity(int size)
{
    return Table::calcCapacity(size);
}

IntegerHashMap::IntegerHashMap(int capacity, float load)
    : m_table(capacity, load)
{
}

IntegerHashMap::~IntegerHashMap() noexcept(false) = default;

void IntegerHashMap::clear()
{
    m_table.clear();
}

Reference<Object> IntegerHashMap::get(int key) const
{
    const Table::Index found = find(key);
    return found != Table::NONE ? m_table.item(found) : nullptr;
}

int IntegerHashMap::getSize() const
{
    return m_table.size();
}

bool IntegerHashMap::isEmpty() const
{
    return getSize() == 0;
}

Reference<Object> IntegerHashMap::put(int key, Object* value)
{
    Reference<Object> item(value);
    const Table::Index found = find(key);
    if (found != Table::NONE)
        return std::exchange(m_table.item(found), std::move(item));
    m_table.insert(hashOf(key), std::move(item));
    return nullptr;
}

Reference<Object> IntegerHashMap::remove(int key)
{
    const Table::Index found = find(key);
    return found != Table::NONE ? m_table.remove(found) : nullptr;
}

Reference<const Set<Integer32>> IntegerHashMap::createKeySet() const
{
    Reference<Set<Integer32>> keys(new Set<Integer32>(new vorb::HashSet));
    for (const auto entry : *this)
        keys->add(Reference<Integer32>(new Integer32(entry.key)).get());
    return keys;
}

IntegerHashMap::Table::Index IntegerHashMap::find(int key) const noexcept
{
    return m_table.find(hashOf(key), key, [](const Reference<Object>&) { return true; });
}

} // namespace vx::collections
