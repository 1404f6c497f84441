#include "vx/collections/vorb/HashMap.h"

#include "vx/collections/vorb/HashMapEntrySet.h"
#include "vx/collections/vorb/detail/Compare.h"
#include "vx/collections/vorb/detail/TextElements.h"

namespace vx::collections::vorb {

namespace {

/// The units of a text were usually allocated right after its object. They load together with the object, which tells
/// where they really are.
void prefetchUnits(const IVXUnknown* key) noexcept
{
    constexpr std::uintptr_t LINE = 64;
    for (const std::uintptr_t offset : {LINE, 2 * LINE})
        __builtin_prefetch(reinterpret_cast<const void*>(reinterpret_cast<std::uintptr_t>(key) + offset));
}

} // namespace

HashMap::Item::Item(IVXUnknown* key, IVXUnknown* value) noexcept
    : m_key(Reference<IVXUnknown>(key).detach())
    , m_value(Reference<IVXUnknown>(value).detach())
{
}

HashMap::Item::~Item()
{
    if (m_entry != nullptr) {
        Reference<HashMapEntry>().attach(m_entry);
        return;
    }
    Reference<IVXUnknown>().attach(m_key);
    Reference<IVXUnknown>().attach(m_value);
}

Reference<IVXUnknown> HashMap::Item::exchangeValue(Reference<IVXUnknown> value) noexcept
{
    if (m_entry != nullptr) {
        m_entry->m_value.swap(value);
        return value;
    }
    Reference<IVXUnknown> old;
    old.attach(std::exchange(m_value, value.detach()));
    return old;
}

Reference<IVXUnknown> HashMap::Item::takeValue() noexcept
{
    return m_entry != nullptr ? m_entry->m_value : exchangeValue(nullptr);
}

HashMapEntry* HashMap::Item::entry() const
{
    HashMapEntry* present = madeEntry().load(std::memory_order_acquire);
    if (present != nullptr)
        return present;

    Reference<HashMapEntry> made(new HashMapEntry);
    made->m_key.attach(m_key);
    made->m_value.attach(m_value);
    if (madeEntry().compare_exchange_strong(present, made.get(), std::memory_order_acq_rel))
        return made.detach();
    (void)made->m_key.detach(); // another thread was first, and its entry owns both
    (void)made->m_value.detach();
    return present;
}

int HashMap::calcCapacity(int size)
{
    return Table::calcCapacity(size);
}

bool HashMap::KeyOrder::areOrdered(const Item& left, const Item& right) const
{
    return isOrdered(left, right.key());
}

bool HashMap::KeyOrder::isOrdered(const Item& item, const IVXUnknown* key) const
{
    return hasOwnComparator && detail::areOrdered(item.key(), key);
}

bool HashMap::KeyOrder::mayMeet(const Item& item, const IVXUnknown*) noexcept
{
    return item.key() != nullptr; // null is not equal to any other key
}

int HashMap::KeyOrder::compare(const Item& left, const Item& right)
{
    return compare(left, right.key());
}

int HashMap::KeyOrder::compare(const Item& item, const IVXUnknown* key)
{
    return detail::compareForIndex(item.key(), key);
}

std::uint32_t HashMap::KeyOrder::tagOf(const Item& item)
{
    return tagOf(item.key());
}

std::uint32_t HashMap::KeyOrder::tagOf(const IVXUnknown* key)
{
    return detail::tagForIndex(key);
}

HashMap::HashMap(int capacity, float load)
    : m_table(capacity, load, KeyOrder {true})
    , m_hasOwnKeyComparator(true)
    , m_hasOwnValueComparator(true)
{
}

HashMap::HashMap(const IVXComparator* key, const IVXComparator* value, int capacity, float load)
    : AbstractMap(key, value)
    , m_table(capacity, load, KeyOrder {detail::isOwnComparator(key)})
    , m_hasOwnKeyComparator(detail::isOwnComparator(key))
    , m_hasOwnValueComparator(detail::isOwnComparator(value))
{
}

HashMap::HashMap(const Map& map, float load)
    : HashMap(calcCapacity(map.getSize()), load)
{
    HashMap::putAll(map);
}

HashMap::HashMap(const Map& map, const IVXComparator* key, const IVXComparator* value, float load)
    : HashMap(key, value, calcCapacity(map.getSize()), load)
{
    HashMap::putAll(map);
}

HashMap::HashMap(const HashMap& other)
    : HashMap(other.getKeyComparator(), other.getValueComparator(), other.m_table.capacity(), other.m_table.load())
{
    for (const auto [key, value] : other)
        HashMap::put(key, value);
}

HashMap::~HashMap() noexcept(false) = default;

void HashMap::clear()
{
    ++m_modificationCount;
    m_table.clear();
}

bool HashMap::containsKey(const IVXUnknown* key) const
{
    return find(key) != NONE;
}

bool HashMap::containsValue(const IVXUnknown* value) const
{
    for (const auto entry : *this)
        if (valuesEqual(entry.value, value))
            return true;
    return false;
}

Reference<const Set> HashMap::createEntrySet() const
{
    return new HashMapEntrySet(const_cast<HashMap*>(this));
}

Reference<Set> HashMap::createEntrySet()
{
    return new HashMapEntrySet(this);
}

Reference<IVXUnknown> HashMap::get(const IVXUnknown* key) const
{
    const Index found = find(key);
    return found != NONE ? m_table.item(found).value() : nullptr;
}

int HashMap::getSize() const
{
    return m_table.size();
}

Reference<IVXUnknown> HashMap::put(IVXUnknown* key, IVXUnknown* value)
{
    Item item(key, value); // first: new objects are released if anything fails
    const std::uint32_t hash = getKeyHashCode(key);
    const Index found = find(key, hash);
    if (found != NONE)
        return m_table.item(found).exchangeValue(item.takeValue());
    m_table.insert(hash, std::move(item));
    ++m_modificationCount;
    return nullptr;
}

Reference<IVXUnknown> HashMap::remove(const IVXUnknown* key)
{
    const Index found = find(key);
    return found != NONE ? removeItem(found) : nullptr;
}

bool HashMap::containsEntry(const IVXUnknown* element) const
{
    const MapEntry& entry = MapEntry::of(element);
    const Index found = find(entry.getKey().get());
    return found != NONE && valuesEqual(m_table.item(found).value(), entry.getValue().get());
}

std::uint32_t HashMap::getKeyHashCode(const IVXUnknown* key) const
{
    return detail::hashOf(*getKeyComparator(), m_hasOwnKeyComparator, key);
}

bool HashMap::keysEqual(const IVXUnknown* stored, const IVXUnknown* other) const
{
    return areEqual(*getKeyComparator(), m_hasOwnKeyComparator, stored, other);
}

bool HashMap::valuesEqual(const IVXUnknown* stored, const IVXUnknown* other) const
{
    return areEqual(*getValueComparator(), m_hasOwnValueComparator, stored, other);
}

bool HashMap::areEqual(
    const IVXComparator& comparator, bool isOwn, const IVXUnknown* stored, const IVXUnknown* other) const
{
    return m_table.unchanged([&] { return detail::areEqual(comparator, isOwn, stored, other); });
}

std::optional<bool> HashMap::containsText(const IVXUnknown* key) const
{
    std::u16string_view units;
    const String* const text = m_hasOwnKeyComparator && !m_table.isIndexed() ? detail::asText(key) : nullptr;
    if (text == nullptr || !vx::detail::PlainBuffer::read(*text, &units))
        return std::nullopt;
    bool isKnown = true;
    const std::uint32_t hash = vx::detail::hashText(units.data(), static_cast<int>(units.size()), false);
    const Index found = m_table.find(hash, key, [&](const Item& item) {
        prefetchUnits(item.key());
        const String* const stored = detail::asText(item.key());
        if (stored == text)
            return true;
        std::u16string_view storedUnits;
        isKnown = stored != nullptr && vx::detail::PlainBuffer::read(*stored, &storedUnits);
        return !isKnown
            || (units.size() == storedUnits.size()
                && vx::detail::equalUnits(units.data(), storedUnits.data(), static_cast<int>(units.size())));
    });
    return isKnown ? std::optional(found != NONE) : std::nullopt;
}

HashMap::Index HashMap::find(const IVXUnknown* key, std::uint32_t hash) const
{
    return m_table.find(hash, key, [&](const Item& item) {
        prefetchUnits(item.key());
        item.prefetchValue(); // loads while the keys are compared
        return keysEqual(item.key(), key);
    });
}

Reference<IVXUnknown> HashMap::removeItem(Index index)
{
    ++m_modificationCount;
    return m_table.remove(index).takeValue();
}

} // namespace vx::collections::vorb
