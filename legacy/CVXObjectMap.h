#pragma once

#include "legacy/CVXSmartPtr.h"
#include "vx/Exception.h"
#include "vx/Object.h"
#include "vx/collections/detail/Element.h"
#include "vx/collections/vorb/Map.h"

/// Wraps a map and gives its keys and values static types; they may be null. It keeps a reference on the map, which
/// stores all entries.
template <class K, class V>
class CVXObjectMap : public vx::Object {
public:
    /// Throws Exception if `map` is null.
    explicit CVXObjectMap(vx::collections::vorb::Map* map)
        : m_map(map)
    {
        if (map == nullptr)
            throw vx::Exception(u"A map of objects needs a map");
    }

    /// Null for a missing key, and for a value of another type.
    CVXSmartPtr<V> get(const K* key) const { return cast(m_map->get(vx::collections::detail::toElement(key))); }
    /// Returns the old value.
    CVXSmartPtr<V> put(K* key, V* value)
    {
        return cast(m_map->put(vx::collections::detail::toElement(key), vx::collections::detail::toElement(value)));
    }

private:
    static CVXSmartPtr<V> cast(const vx::Reference<IVXUnknown>& value) { return dynamic_cast<V*>(value.get()); }

    vx::Reference<vx::collections::vorb::Map> m_map;
};
