#pragma once

#include "vx/collections/List.h"
#include "vx/collections/StringHashMap.h"
#include "vx/i18n/StringBundle.h"
#include "vx/sync/Mutex.h"

#include <atomic>

namespace vx::i18n {

/// The strings of a map in memory. It is read at each look-up, its keys only once: an index stays what it is.
class VX_API StringMapBundle : public StringBundle {
public:
    /// Both are counted; the values of `map` are `String`s. `locale` may be null. Throws ResultException for a null `map`.
    StringMapBundle(const collections::StringHashMap* map, Locale* locale);
    ~StringMapBundle() noexcept(false) override;

    // StringBundle
    /// The map's keys, and behind them those of a parent that the map lacks.
    Reference<const collections::Collection<String>> getKeys() const override;

protected:
    // StringBundle
    String lookupString(const String& key) const override;

private:
    friend class StringBundleFace; // calls these two: overrides of the view would take places in the table of the class

    std::int32_t countKeys(std::int32_t* count) const;
    std::int32_t getResource(std::int32_t index, IVXCharBuffer* key, IVXCharBuffer* value) const;
    const collections::List<String>& buildKeySet() const;

    Reference<const collections::StringHashMap> m_map;
    mutable sync::Mutex m_lock;
    mutable Reference<collections::List<String>> m_keys;
    mutable std::atomic<bool> m_hasKeys {false}; ///< set under the lock, looked at without it
};

} // namespace vx::i18n
