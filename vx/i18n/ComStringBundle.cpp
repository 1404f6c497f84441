#include "vx/i18n/ComStringBundle.h"

#include "vx/Exception.h"
#include "vx/Result.h"
#include "vx/TerminatedText.h"
#include "vx/collections/vorb/LinkedList.h"

namespace vx::i18n {

ComStringBundle::ComStringBundle(IVXResourceBundle* component, Locale* locale)
    : StringBundle(locale)
    , m_component(component)
{
    if (component == nullptr)
        throwResult(RESULT_INVALID_ARGUMENT);
}

ComStringBundle::~ComStringBundle() noexcept(false) = default;

Reference<const collections::Collection<String>> ComStringBundle::getKeys() const
{
    std::int32_t count = 0;
    throwIfFailed(m_component->GetCount(&count));
    if (m_keys != nullptr)
        return m_keys;

    const Reference<collections::List<String>> keys(new collections::List<String>(new collections::vorb::LinkedList));
    for (std::int32_t index = 0; index < count; ++index) {
        const Reference<String> key(new String);
        throwIfFailed(m_component->GetResource(index, key.get(), nullptr));
        keys->add(key.get());
    }
    m_keys = keys;
    return m_keys;
}

String ComStringBundle::lookupString(const String& key) const
{
    if (!SystemName::isValid(key))
        return String(); // the component would see another key
    const Reference<String> value(new String); // a component may hold a reference to it
    static_cast<void>(m_component->LoadCharBuffer(TerminatedText(key), value.get())); // a failure leaves it empty
    return *value;
}

} // namespace vx::i18n
