#pragma once

#include "legacy/CVXSmartPtr.h"
#include "vx/Object.h"
#include "vx/collections/vorb/Map.h"

/// A map of counted objects with types for its keys and values. It counts and fills another map.
template <class K, class V>
class CVXObjectMap : public vx::Object {
public:
    /// Not null.
    explicit CVXObjectMap(vx::collections::vorb::Map* map)
        : m_map(map)
    {
    }

    /// Null for a key that is not there, and for a value of another type.
    CVXSmartPtr<V> get(const K* key) const { return cast(m_map->get(key->GetUnknown())); }
    /// Gives the value before.
    CVXSmartPtr<V> put(K* key, V* value) { return cast(m_map->put(key->GetUnknown(), value->GetUnknown())); }

private:
    static CVXSmartPtr<V> cast(const vx::Reference<IVXUnknown>& value) { return dynamic_cast<V*>(value.get()); }

    vx::Reference<vx::collections::vorb::Map> m_map;
};
