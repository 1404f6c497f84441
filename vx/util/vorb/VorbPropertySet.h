#pragma once

#include "vx/util/PropertySet.h"

namespace vx::util::vorb {

/// The properties of a component with the class operations. A failing component throws ResultException with its result,
/// except where told otherwise.
class VX_API VorbPropertySet : public PropertySet {
public:
    /// `foreign` is counted; `parent` plays no part. Throws ResultException for a null `foreign`.
    VorbPropertySet(IPropertySet* foreign, const PropertySet* parent);
    ~VorbPropertySet() noexcept(false) override;

    // PropertySet
    void set(const String& key, const String& value) override;
    String get(const String& key) const override;
    /// False where the component fails.
    bool hasProperty(const String& key) const override;
    Reference<const collections::Set<String>> getKeys() const override;
    /// Removes the keys one by one.
    void clear() override;
    /// The empty text where the component fails.
    String remove(const String& key) override;

private:
    Reference<IPropertySet> m_foreign;
};

} // namespace vx::util::vorb
