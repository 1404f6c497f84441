#include "vx/collections/StringHashMap.h"

#include "vx/collections/Set.h"
#include "vx/collections/vorb/HashSet.h"
#include "vx/detail/ChainIndex.h"
#include "vx/detail/StringLocks.h"
#include "vx/detail/TextHash.h"
#include "vx/detail/TextRange.h"
#include "vx/detail/TextScan.h"

namespace vx::collections {

using vx::detail::StringReadLock;
using vx::detail::StringSource;

namespace {

/// The text of a wanted key. A key in the map may have the same buffer, so that a buffer with a real lock is not locked for
/// the whole search: the text is copied instead.
struct KeyText : StringSource {
    explicit KeyText(const String& key)
        : StringSource(key, key)
    {
    }
};

/// Uses the text of a key in the map, which is kept: reading it may call code of a program that removes it.
template <class Use>
[[gnu::noinline]] auto withLockedText(const String& key, Use use)
{
    const String kept(key);
    const StringReadLock text(kept);
    return use(std::u16string_view(text.data(), static_cast<std::size_t>(text.length())));
}

template <class Use>
auto withText(const String& key, Use use)
{
    std::u16string_view units;
    return vx::detail::PlainBuffer::readExact(key, &units) ? use(units) : withLockedText(key, use);
}

} // namespace

int StringHashMap::KeyOrder::compare(const Item& left, const Item& right)
{
    if (std::u16string_view units; vx::detail::PlainBuffer::readExact(right.key, &units))
        return compare(left, units);
    const Item keptLeft {left.key, nullptr};
    const String keptRight(right.key);
    const StringSource text(keptLeft.key, keptRight);
    return compare(keptLeft, std::u16string_view(text.data(), static_cast<std::size_t>(text.length())));
}

int StringHashMap::KeyOrder::compare(const Item& left, std::u16string_view right)
{
    return withText(left.key, [right](std::u16string_view text) { return vx::detail::compareForIndex(text, right); });
}

std::uint32_t StringHashMap::KeyOrder::tagOf(const Item& item)
{
    return withText(item.key, [](std::u16string_view text) { return tagOf(text); });
}

std::uint32_t StringHashMap::KeyOrder::tagOf(std::u16string_view key) noexcept
{
    return vx::detail::tagForIndex(key);
}

int StringHashMap::calcCapacity(int size)
{
    return Table::calcCapacity(size);
}

StringHashMap::StringHashMap(int capacity, float load)
    : m_table(capacity, load)
{
}

StringHashMap::~StringHashMap() noexcept(false) = default;

void StringHashMap::clear()
{
    m_table.clear();
}

Reference<Object> StringHashMap::get(const char16_t* chars, int length) const
{
    const Table::Index found = find(chars, vx::detail::measured(chars, length)).index;
    return found != Table::NONE ? m_table.item(found).value : nullptr;
}

Reference<Object> StringHashMap::get(const String& key) const
{
    const KeyText text(key);
    return get(text.data(), text.length());
}

int StringHashMap::getSize() const
{
    return m_table.size();
}

bool StringHashMap::containsKey(const char16_t* chars, int length) const
{
    return get(chars, length) != nullptr;
}

bool StringHashMap::containsKey(const String& key) const
{
    const KeyText text(key);
    return containsKey(text.data(), text.length());
}

bool StringHashMap::isEmpty() const
{
    return getSize() == 0;
}

Reference<Object> StringHashMap::put(const String& key, Object* value)
{
    Reference<Object> counted(value); // first: a new object is released if anything fails
    Item item {key, std::move(counted)};
    const auto [hash, found] = find(item.key);
    if (found != Table::NONE)
        return std::exchange(m_table.item(found).value, std::move(item.value));
    m_table.insert(hash, std::move(item));
    return nullptr;
}

Reference<Object> StringHashMap::remove(const String& key)
{
    const Table::Index found = find(key).index;
    return found != Table::NONE ? m_table.remove(found).value : nullptr;
}

Reference<const Set<String>> StringHashMap::createKeySet() const
{
    Reference<Set<String>> keys(new Set<String>(new vorb::HashSet));
    for (const auto entry : *this)
        keys->add(Reference<String>(new String(entry.key)).get());
    return keys;
}

StringHashMap::Place StringHashMap::find(const char16_t* chars, int length) const
{
    const std::uint32_t hash = vx::detail::hashText(chars, length, false);
    return {hash, find(hash, {chars, static_cast<std::size_t>(length)})};
}

StringHashMap::Place StringHashMap::find(const String& key) const
{
    const KeyText text(key);
    return find(text.data(), text.length());
}

StringHashMap::Table::Index StringHashMap::find(std::uint32_t hash, std::u16string_view key) const
{
    const auto isKey = [key](std::u16string_view stored) {
        return stored.size() == key.size()
            && vx::detail::equalUnits(stored.data(), key.data(), static_cast<int>(stored.size()));
    };
    return m_table.find(
        hash, key, [&](const Item& item) { return m_table.unchanged([&] { return withText(item.key, isKey); }); });
}

} // namespace vx::collections
