#pragma once

#include "vx/collections/List.h"
#include "vx/i18n/StringBundle.h"

namespace vx::i18n {

/// The strings of a component. The first call of `getKeys` must not run at the same time as another one.
class VX_API ComStringBundle : public StringBundle {
public:
    /// Keeps references on both; `locale` may be null. Throws ResultException for a null `component`.
    ComStringBundle(IVXResourceBundle* component, Locale* locale);
    ~ComStringBundle() noexcept(false) override;

    // StringBundle
    /// Asks the component for its keys only once. Throws ResultException if the component fails.
    Reference<const collections::Collection<String>> getKeys() const override;

protected:
    // StringBundle
    String lookupString(const String& key) const override;

private:
    Reference<IVXResourceBundle> m_component;
    mutable Reference<collections::List<String>> m_keys;
};

} // namespace vx::i18n
