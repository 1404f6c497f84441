#include "vx/util/PropertySet.h"

#include "vx/Exception.h"
#include "vx/Occasion.h"
#include "vx/detail/StringLocks.h"
#include "vx/detail/TextHash.h"
#include "vx/util/CopyCharBuffer.h"
#include "vx/vorb/Boundary.h"

#include <cstdint>
#include <string_view>

namespace vx::util {

namespace {

/// The interface `iid` of a new object that holds `text`.
std::int32_t storeText(const String& text, const _GUID& iid, void** result)
{
    const Reference<String> object(new String(text));
    return object->QueryInterface(iid, result);
}

void clearResult(void** result) noexcept
{
    if (result != nullptr)
        *result = nullptr;
}

const String& textOf(const Object& value) noexcept
{
    return static_cast<const String&>(value);
}

} // namespace

std::int32_t PropertySetFace::Set(const char16_t* key, IVXUnknown* value)
{
    return vx::vorb::resultAtBoundary([&] {
        const Reference<IVXCharBuffer> buffer(value);
        if (buffer == nullptr)
            return RESULT_NO_INTERFACE;
        String text;
        VXCopyCharBuffer(&text, buffer.get());
        static_cast<PropertySet&>(*this).set(key, text);
        return RESULT_OK;
    });
}

std::int32_t PropertySetFace::Get(const char16_t* key, const _GUID& iid, void** result) const
{
    clearResult(result);
    return storeText(static_cast<const PropertySet&>(*this).get(key), iid, result);
}

std::int32_t PropertySetFace::Remove(const char16_t* key, const _GUID& iid, void** result)
{
    clearResult(result);
    return storeText(static_cast<PropertySet&>(*this).remove(key), iid, result);
}

std::int32_t PropertySetFace::GetKeyIterator(const _GUID&, void** result) const
{
    clearResult(result);
    return RESULT_NOT_IMPLEMENTED;
}

PropertySet::PropertySet()
    : PropertySet(nullptr)
{
}

PropertySet::PropertySet(const PropertySet* parent)
    : m_parent(parent)
    , m_map(new collections::StringHashMap)
{
}

PropertySet::PropertySet(const PropertySet* parent, collections::StringHashMap* map)
    : m_parent(parent)
    , m_map(map)
{
}

PropertySet::~PropertySet() noexcept(false) = default;

const vx::vorb::InterfaceData* PropertySet::GetComIntfMap()
{
    static const vx::vorb::InterfaceData map[]
        = {vx::vorb::viewRow<PropertySet, vorb::IPropertySet>(), vx::vorb::forwardRow<Object>(), vx::vorb::endRow()};
    return map;
}

void PropertySet::set(const String& key, const String& value)
{
    m_map->put(key, Reference<String>(new String(value)).get());
}

String PropertySet::get(const String& key) const
{
    const Found found = find(key);
    if (found.value != nullptr)
        return *found.value;
    if (found.next == nullptr)
        throwDuring(u"get property", key, Exception());
    return found.next->get(key);
}

bool PropertySet::hasProperty(const String& key) const
{
    const Found found = find(key);
    return found.value != nullptr || (found.next != nullptr && found.next->hasProperty(key));
}

Reference<const collections::Set<String>> PropertySet::getKeys() const
{
    return m_map->createKeySet();
}

void PropertySet::clear()
{
    m_map->clear();
}

String PropertySet::remove(const String& key)
{
    const Reference<Object> value = m_map->remove(key);
    return value != nullptr ? textOf(*value) : String();
}

PropertySet::Found PropertySet::find(const String& key) const
{
    std::u16string_view units;
    if (!vx::detail::PlainBuffer::readExact(key, &units)) {
        const String copy(String::AcquireCopy, key); // a key in the map may have the same buffer with a real lock
        return find(copy);
    }
    const std::uint32_t hash = vx::detail::hashText(units.data(), static_cast<int>(units.size()), false);
    const PropertySet* set = this;
    do {
        const collections::StringHashMap& map = *set->m_map;
        const auto found = map.find(hash, units);
        if (found != collections::StringHashMap::Table::NONE)
            return {&textOf(*map.m_table.item(found).value), nullptr};
        set = set->m_parent.get();
    } while (set != nullptr && vx::detail::isExactly<PropertySet>(*set));
    return {nullptr, set};
}

Reference<const vorb::IPropertySet> PropertySet::getVorb(const PropertySet& set)
{
    return new PropertySet(set.m_parent.get(), set.m_map.get());
}

} // namespace vx::util
