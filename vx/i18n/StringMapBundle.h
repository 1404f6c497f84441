#pragma once

#include "vx/collections/List.h"
#include "vx/collections/StringHashMap.h"
#include "vx/i18n/StringBundle.h"
#include "vx/sync/Mutex.h"

#include <atomic>

namespace vx::i18n {

/// The strings of a map in memory. Look-ups read the map, but its keys are read only once, so their indexes never
/// change.
class VX_API StringMapBundle : public StringBundle {
public:
    /// Keeps references on both; the values of `map` are `String`s. `locale` may be null. Throws ResultException for a
    /// null `map`.
    StringMapBundle(const collections::StringHashMap* map, Locale* locale);
    ~StringMapBundle() noexcept(false) override;

    // StringBundle
    /// The keys of the map, and after them those of a parent that the map lacks.
    Reference<const collections::Collection<String>> getKeys() const override;

protected:
    // StringBundle
    String lookupString(const String& key) const override;

private:
    // Calls the two operations below: overrides in the view would take places in the table of the class.
    friend class StringBundleFace;

    std::int32_t countKeys(std::int32_t* count) const;
    std::int32_t getResource(std::int32_t index, IVXCharBuffer* key, IVXCharBuffer* value) const;
    const collections::List<String>& buildKeySet() const;

    Reference<const collections::StringHashMap> m_map;
    mutable sync::Mutex m_lock;
    mutable Reference<collections::List<String>> m_keys;
    mutable std::atomic<bool> m_hasKeys {false}; ///< set under the lock, read without it
};

} // namespace vx::i18n
