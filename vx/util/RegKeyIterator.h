#pragma once

#include "vx/Reference.h"
#include "vx/String.h"
#include "vx/collections/vorb/ConstIterator.h"
#include "vxsys/Registry.h"

namespace vx::util {

/// An iterator over the names at one key of the registry, as they were at the start. `hasNext` advances it: `next`
/// returns the same element until then, and two calls of `hasNext` skip one.
class VX_API RegistryIterator : public Object, public collections::vorb::ConstIterator {
public:
    RegistryIterator(const RegistryIterator&) = delete;
    RegistryIterator& operator=(const RegistryIterator&) = delete;
    ~RegistryIterator() noexcept(false) override;

    VX_OBJECT_UNKNOWN(Object)

    // ConstIterator
    bool hasNext() override;
    Reference<IVXUnknown> next() override;

protected:
    static constexpr std::int32_t LONGEST_NAME = 255;

    /// Takes ownership of the enumeration. `atEnd` is the text of the Exception that `next` throws if there is no
    /// element.
    RegistryIterator(VXRegistryEnum enumeration, const char16_t* atEnd) noexcept;

    /// The next element; null at the end.
    virtual Reference<Object> fetch(VXRegistryEnum enumeration) = 0;

private:
    VXRegistryEnum m_enumeration;
    const char16_t* m_atEnd;
    Reference<Object> m_current;
};

/// The keys directly below a key, as `RegistryKey` objects. `next` at the end throws Exception "no more keys".
class VX_API RegKeyIterator : public RegistryIterator {
public:
    /// Throws ResultException for a key that cannot be enumerated.
    RegKeyIterator(ENUM_VX_HKEY hive, const String& key);
    ~RegKeyIterator() noexcept(false) override;

protected:
    Reference<Object> fetch(VXRegistryEnum enumeration) override;

private:
    ENUM_VX_HKEY m_hive;
    String m_key;
};

/// The names of a key's values, as `String` objects. `next` at the end throws Exception "no more values".
class VX_API RegKeyValueIterator : public RegistryIterator {
public:
    /// Throws ResultException for a key that cannot be enumerated.
    RegKeyValueIterator(ENUM_VX_HKEY hive, const String& key);
    ~RegKeyValueIterator() noexcept(false) override;

protected:
    Reference<Object> fetch(VXRegistryEnum enumeration) override;
};

} // namespace vx::util
