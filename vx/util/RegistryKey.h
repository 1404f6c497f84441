#pragma once

#include "vx/String.h"
#include "vx/collections/ConstIterator.h"
#include "vxsys/Registry.h"

#include <concepts>
#include <cstdint>

struct HKEY__; ///< never defined: a pointer to it is one of the system's numbers

namespace vx::util {

/// The integer types that are stored as a value of 32 or 64 bits, according to their size.
template <class T>
concept RegistryNumber = std::integral<T> && sizeof(T) >= sizeof(std::uint32_t);

/// Names a key of the registry by hive and path. It keeps nothing open: the key need not exist, and every operation
/// accesses the store again. A failure of the store throws ResultException with its code (vxsys/Registry.h). A path or
/// a name with a zero unit in it is rejected with RESULT_INVALID_NAME.
///
/// "/" is read as a backslash. Equality ignores case, but `hashCode` is the hash of the path as it is written.
class VX_API RegistryKey : public Object {
public:
    /// The name of the hive, in any case, then a backslash and the path. VX_HKEY_CONFIG and VX_HKEY_CLASSES mean the 32-bit
    /// views, the same names with _CROSS at the end the 64-bit views. Throws Exception "Unknown VX_HKEY" for any other
    /// name. `getKeyName` of a hive's name alone is that name.
    explicit RegistryKey(const String& path);
    RegistryKey(ENUM_VX_HKEY hive, const String& key);
    /// `root` is one of the numbers that `getHKEY` gives; any other is stored as it is, and every operation of the
    /// store rejects it.
    RegistryKey(HKEY__* root, const String& key);
    RegistryKey(const RegistryKey& other) noexcept = default;
    RegistryKey& operator=(const RegistryKey& other) = default;
    ~RegistryKey() noexcept override;

    // Object
    /// First the hive, then the path without regard to case. Throws CastFailedException for another class.
    int compareTo(const Object& other) const override;
    bool equals(const Object& other) const override;
    std::uint32_t hashCode() const override;

    ENUM_VX_HKEY getVXHKEY() const noexcept { return m_hive; }
    /// 0x80000000 for classes, 0x80000001 for the user, 0x80000002 for configuration, otherwise -1.
    HKEY__* getHKEY() const noexcept;
    /// "VX_HKEY_USER\Software\X". With `relative`, the name of the hive is left out, but not the backslash.
    String getKey(bool relative = false) const;
    String getKeyName() const { return m_keyName; }
    /// Throws Exception "No parent key" if the path has only one name.
    RegistryKey getParent() const;
    RegistryKey getSubkey(const String& name) const;

    /// Removes the key with everything below it.
    void remove() const;
    void deleteValue(const String& name) const;

    bool valueExists(const String& name) const;
    ENUM_VX_REG_TYPE getValueType(const String& name) const;
    /// These throw Exception "Registry type mismatch" for a value of another type.
    String getValueString(const String& name) const;
    std::uint32_t getValueUINT32(const String& name) const;
    std::uint64_t getValueUINT64(const String& name) const;
    /// Reads the value's bytes into `data`, which has `length` bytes, and returns their number. For a value that cannot
    /// be read it returns 0 and does not throw. For a longer value it returns the number of bytes, and `data` does not
    /// change.
    std::int32_t getValue(const String& name, signed char* data, std::int32_t length) const;
    std::int32_t getValue(signed char* data, std::int32_t length) const;

    /// Sets a value, and creates the key if needed.
    void setValue(const String& name, const String& text) const;
    template <RegistryNumber Number>
    void setValue(const String& name, Number number) const
    {
        setNumber(name, number);
    }
    void setValue(const String& name, const signed char* data, std::int32_t length) const;
    /// The key's default value.
    void setValue(const String& text) const;
    template <RegistryNumber Number>
    void setValue(Number number) const
    {
        setNumber(String(), number);
    }

    /// Iterates over what exists now. `hasNext` advances, and `next` returns the same element until then.
    Reference<collections::ConstIterator<RegistryKey>> getSubkeyIterator() const;
    Reference<collections::ConstIterator<String>> getValueIterator() const;

    /// Removes the hive's name, as in the first constructor, from the start of `key`.
    static ENUM_VX_HKEY extractVXHkey(String& key);
    static HKEY__* extractHkey(String& key);

private:
    void normalize();
    /// Names the value in a failure of `work`.
    template <class Work>
    void duringValue(std::u16string_view operation, const String& name, Work&& work) const;
    template <RegistryNumber Number>
    void setNumber(const String& name, Number number) const;
    void setValue(const String& name, ENUM_VX_REG_TYPE type, const void* data, std::int32_t length) const;
    std::int32_t tryGetValue(const String& name, ENUM_VX_REG_TYPE type, void* data, std::int32_t& length) const;
    std::int32_t tryGetValue(const String& name, ENUM_VX_REG_TYPE type, IByteBuffer& buffer) const;
    template <class Number>
    Number getNumber(const String& name, ENUM_VX_REG_TYPE type) const;

    ENUM_VX_HKEY m_hive;
    String m_key;
    String m_keyName;
};

template <RegistryNumber Number>
void RegistryKey::setNumber(const String& name, Number number) const
{
    if constexpr (sizeof(Number) == sizeof(std::uint32_t)) {
        const auto value = static_cast<std::uint32_t>(number);
        setValue(name, VX_REG_UINT32, &value, sizeof value);
    } else {
        const auto value = static_cast<std::uint64_t>(number);
        setValue(name, VX_REG_UINT64, &value, sizeof value);
    }
}

} // namespace vx::util
