#include "vx/i18n/StringMapBundle.h"

#include "vx/Exception.h"
#include "vx/Result.h"
#include "vx/TerminatedText.h"
#include "vx/collections/Set.h"
#include "vx/collections/vorb/ArrayList.h"
#include "vx/sync/ScopedLock.h"
#include "vx/util/CopyCharBuffer.h"
#include "vx/vorb/Boundary.h"

namespace vx::i18n {

StringMapBundle::StringMapBundle(const collections::StringHashMap* map, Locale* locale)
    : StringBundle(locale)
    , m_map(map)
    , m_lock("StringMapBundle::m_lock")
{
    if (map == nullptr)
        throwResult(RESULT_INVALID_ARGUMENT);
}

StringMapBundle::~StringMapBundle() noexcept(false) = default;

Reference<const collections::Collection<String>> StringMapBundle::getKeys() const
{
    return &buildKeySet();
}

std::int32_t StringMapBundle::countKeys(std::int32_t* count) const
{
    return vorb::atBoundary(count, [&] { return std::int32_t {buildKeySet().getSize()}; });
}

std::int32_t StringMapBundle::getResource(std::int32_t index, IVXCharBuffer* key, IVXCharBuffer* value) const
{
    return vorb::resultAtBoundary([&] {
        const Reference<String> found = buildKeySet().get(index);
        VXCopyCharBuffer(key, found.get());
        if (value == nullptr)
            return RESULT_OK;
        if (SystemName::isValid(*found))
            return LoadCharBuffer(TerminatedText(*found), value);
        util::copyText(value, getString(*found)); // a component would see another key, up to the zero unit
        return RESULT_OK;
    });
}

String StringMapBundle::lookupString(const String& key) const
{
    const Reference<Object> found = m_map->get(key);
    return found != nullptr ? static_cast<const String&>(*found) : String();
}

const collections::List<String>& StringMapBundle::buildKeySet() const
{
    if (m_hasKeys.load(std::memory_order_acquire))
        return *m_keys;
    const sync::ScopedLock guard(m_lock);
    if (m_hasKeys.load(std::memory_order_relaxed))
        return *m_keys;

    const Reference<collections::List<String>> keys(new collections::List<String>(new collections::vorb::ArrayList));
    const Reference<const collections::Set<String>> own = m_map->createKeySet();
    for (const Reference<String>& key : *own)
        keys->add(key.get());
    std::int32_t count = 0;
    if (m_parent != nullptr)
        static_cast<void>(m_parent->GetCount(&count)); // a parent without a list of keys adds none
    for (std::int32_t index = 0; index < count; ++index) {
        const Reference<String> key(new String);
        throwIfFailed(m_parent->GetResource(index, key.get(), nullptr));
        if (!m_map->containsKey(*key))
            keys->add(key.get());
    }
    m_keys = keys;
    m_hasKeys.store(true, std::memory_order_release);
    return *m_keys;
}

} // namespace vx::i18n
