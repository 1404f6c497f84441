#pragma once

#include "vx/Object.h"
#include "vx/Reference.h"
#include "vx/String.h"
#include "vx/collections/Set.h"
#include "vx/collections/StringHashMap.h"
#include "vx/util/vorb/IPropertySet.h"

namespace vx::util {

/// The `IPropertySet` view of `PropertySet`.
class VX_API PropertySetFace : public vorb::IPropertySet {
public:
    std::int32_t Set(const char16_t* key, IVXUnknown* value) override;
    /// A missing key has no result code: here and in `Remove`, the Exception of the class operation passes through.
    std::int32_t Get(const char16_t* key, const _GUID& iid, void** result) const override;
    std::int32_t Remove(const char16_t* key, const _GUID& iid, void** result) override;
    /// RESULT_NOT_IMPLEMENTED.
    std::int32_t GetKeyIterator(const _GUID& iid, void** result) const override;

protected:
    PropertySetFace() = default;
    ~PropertySetFace() = default;
};

/// Texts by key, with an optional parent that answers for keys that the set does not hold. One thread at a time.
class VX_API PropertySet : public Object, public PropertySetFace {
public:
    PropertySet();
    /// Keeps a reference on `parent`, which may be null.
    explicit PropertySet(const PropertySet* parent);
    PropertySet(const PropertySet&) = delete;
    PropertySet& operator=(const PropertySet&) = delete;
    ~PropertySet() noexcept(false) override;

    VX_OBJECT_UNKNOWN(Object)
    static const vx::vorb::InterfaceData* GetComIntfMap();

    virtual void set(const String& key, const String& value);
    /// Throws Exception for a key that neither the set nor a parent holds.
    virtual String get(const String& key) const;
    virtual bool hasProperty(const String& key) const;
    /// The keys of the set itself, without the parent's.
    virtual Reference<const collections::Set<String>> getKeys() const;
    /// The parent keeps its keys, here and in `remove`.
    virtual void clear();
    /// Returns the old value, empty if there was none.
    virtual String remove(const String& key);

    /// A new set that shares the entries and the parent of `set`: changes of the one show in the other.
    static Reference<const vorb::IPropertySet> getVorb(const PropertySet& set);

private:
    struct Found {
        const String* value; ///< null if no set up to `next` has the key
        const PropertySet* next; ///< the parent to ask for it, null if none
    };

    PropertySet(const PropertySet* parent, collections::StringHashMap* map);
    /// Asks this set and its parents in a loop, up to the first of a derived class, which may have its own answer.
    Found find(const String& key) const;

    Reference<const PropertySet> m_parent;
    Reference<collections::StringHashMap> m_map;
};

} // namespace vx::util
