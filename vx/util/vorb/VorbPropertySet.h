#pragma once

#include "vx/util/PropertySet.h"

namespace vx::util::vorb {

/// The properties of a component with the class operations. If the component fails, an operation throws ResultException with
/// its result, unless its comment says otherwise. No component can have a key with a zero unit in it, since it gets keys
/// that end at the first one: RESULT_INVALID_NAME.
class VX_API VorbPropertySet : public PropertySet {
public:
    /// Adds a reference to `foreign`, and does not use `parent`. Throws ResultException for a null `foreign`.
    VorbPropertySet(IPropertySet* foreign, const PropertySet* parent);
    ~VorbPropertySet() noexcept(false) override;

    // PropertySet
    void set(const String& key, const String& value) override;
    String get(const String& key) const override;
    /// False if the component fails, or for a key with a zero unit.
    bool hasProperty(const String& key) const override;
    Reference<const collections::Set<String>> getKeys() const override;
    /// Removes the keys one by one.
    void clear() override;
    /// The empty text if the component fails, or for a key with a zero unit.
    String remove(const String& key) override;

private:
    Reference<IPropertySet> m_foreign;
};

} // namespace vx::util::vorb
