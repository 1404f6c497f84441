#include "vx/util/RegistryKey.h"

#include "vx/Exception.h"
#include "vx/Occasion.h"
#include "vx/Result.h"
#include "vx/TerminatedText.h"
#include "vx/detail/CompareAs.h"
#include "vx/util/BufferLocks.h"
#include "vx/util/RWByteBuffer.h"
#include "vx/util/RegKeyIterator.h"

#include <cstring>

namespace vx::util {

namespace {

constexpr char16_t DELIMITER = u'\\';
constexpr const char16_t* BETWEEN = u"\\";

struct HiveRow {
    const char16_t* name; ///< as it is printed
    std::uint32_t root;
};

/// By the number of the hive.
constexpr HiveRow HIVES[] = {
    {u"VX_HKEY_CLASSES_32", 0x80000000},
    {u"VX_HKEY_CONFIG_32", 0x80000002},
    {u"VX_HKEY_USER", 0x80000001},
    {u"VX_HKEY_CLASSES_64", 0x80000000},
    {u"VX_HKEY_CONFIG_64", 0x80000002},
};

struct HiveName {
    const char16_t* name;
    ENUM_VX_HKEY hive;
};

constexpr HiveName HIVE_NAMES[] = {
    {u"VX_HKEY_CONFIG", VX_HKEY_CONFIG_32},
    {u"VX_HKEY_CONFIG_32", VX_HKEY_CONFIG_32},
    {u"VX_HKEY_CONFIG_64", VX_HKEY_CONFIG_64},
    {u"VX_HKEY_CONFIG_CROSS", VX_HKEY_CONFIG_64},
    {u"VX_HKEY_CLASSES", VX_HKEY_CLASSES_32},
    {u"VX_HKEY_CLASSES_32", VX_HKEY_CLASSES_32},
    {u"VX_HKEY_CLASSES_64", VX_HKEY_CLASSES_64},
    {u"VX_HKEY_CLASSES_CROSS", VX_HKEY_CLASSES_64},
    {u"VX_HKEY_USER", VX_HKEY_USER},
};

HKEY__* toRoot(std::uint32_t number) noexcept
{
    return reinterpret_cast<HKEY__*>(std::uintptr_t {number});
}

std::uint32_t toNumber(const HKEY__* root) noexcept
{
    return static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(root));
}

HKEY__* rootOf(ENUM_VX_HKEY hive) noexcept
{
    return hive < std::size(HIVES) ? toRoot(HIVES[hive].root) : reinterpret_cast<HKEY__*>(std::intptr_t {-1});
}

/// The first hive with the number, which is the 32-bit view. The number itself if there is none.
ENUM_VX_HKEY hiveOf(std::uint32_t root) noexcept
{
    for (std::size_t hive = 0; hive < std::size(HIVES); ++hive) {
        if (HIVES[hive].root == root)
            return static_cast<ENUM_VX_HKEY>(hive);
    }
    return static_cast<ENUM_VX_HKEY>(root);
}

} // namespace

RegistryKey::RegistryKey(const String& path)
    : m_hive(VX_HKEY_CLASSES_32)
    , m_key(path)
{
    normalize();
    m_hive = extractVXHkey(m_key);
}

RegistryKey::RegistryKey(ENUM_VX_HKEY hive, const String& key)
    : m_hive(hive)
    , m_key(key)
{
    normalize();
}

RegistryKey::RegistryKey(HKEY__* root, const String& key)
    : RegistryKey(hiveOf(toNumber(root)), key)
{
}

RegistryKey::~RegistryKey() noexcept = default;

int RegistryKey::compareTo(const Object& other) const
{
    return vx::detail::compareAs<RegistryKey>(*this, other, [&](const RegistryKey& key) {
        return m_hive != key.m_hive ? (m_hive < key.m_hive ? -1 : 1) : m_key.compare(key.m_key, true);
    });
}

bool RegistryKey::equals(const Object& other) const
{
    return compareTo(other) == 0;
}

std::uint32_t RegistryKey::hashCode() const
{
    return m_key.hashCode();
}

HKEY__* RegistryKey::getHKEY() const noexcept
{
    return rootOf(m_hive);
}

String RegistryKey::getKey(bool relative) const
{
    String key(m_key);
    if (!key.isEmpty())
        key.insert(0, BETWEEN);
    const ENUM_VX_HKEY hive = hiveOf(m_hive);
    if (!relative && hive < std::size(HIVES))
        key.insert(0, HIVES[hive].name);
    return key;
}

RegistryKey RegistryKey::getParent() const
{
    const int end = m_key.lastIndexOf(DELIMITER);
    if (end == -1)
        throw Exception(u"No parent key");
    return {m_hive, m_key.substring(0, end)};
}

RegistryKey RegistryKey::getSubkey(const String& name) const
{
    return {m_hive, m_key + BETWEEN + name};
}

void RegistryKey::remove() const
{
    during(
        u"remove registry key", [this] { return getKey(); },
        [this] { throwIfFailed(VXRegistryDeleteKey(m_hive, SystemName(m_key))); });
}

void RegistryKey::deleteValue(const String& name) const
{
    duringValue(
        u"delete", name, [&] { throwIfFailed(VXRegistryDeleteValue(m_hive, SystemName(m_key), SystemName(name))); });
}

bool RegistryKey::valueExists(const String& name) const
{
    return SystemName::isValid(m_key) && SystemName::isValid(name)
        && !failed(VXRegistryGetValue(m_hive, TerminatedText(m_key), TerminatedText(name), nullptr, nullptr, nullptr));
}

ENUM_VX_REG_TYPE RegistryKey::getValueType(const String& name) const
{
    ENUM_VX_REG_TYPE type {};
    duringValue(u"read", name, [&] {
        throwIfFailed(VXRegistryGetValue(m_hive, SystemName(m_key), SystemName(name), &type, nullptr, nullptr));
    });
    return type;
}

String RegistryKey::getValueString(const String& name) const
{
    RWByteBuffer bytes;
    duringValue(u"read", name, [&] { throwIfFailed(tryGetValue(name, VX_REG_STRING, bytes)); });
    const ByteReadLock lock(bytes);
    auto length = lock.length() / static_cast<int>(sizeof(char16_t));
    String text;
    char16_t* units = text.getWriteLock(length);
    if (length > 0) {
        std::memcpy(units, lock.data(), static_cast<std::size_t>(length) * sizeof(char16_t));
        length -= units[length - 1] == 0;
    }
    text.releaseWriteLock(length);
    return text;
}

std::uint32_t RegistryKey::getValueUINT32(const String& name) const
{
    return getNumber<std::uint32_t>(name, VX_REG_UINT32);
}

std::uint64_t RegistryKey::getValueUINT64(const String& name) const
{
    return getNumber<std::uint64_t>(name, VX_REG_UINT64);
}

std::int32_t RegistryKey::getValue(const String& name, signed char* data, std::int32_t length) const
{
    tryGetValue(name, VX_REG_BINARY, data, length);
    return length;
}

std::int32_t RegistryKey::getValue(signed char* data, std::int32_t length) const
{
    return getValue(String(), data, length);
}

void RegistryKey::setValue(const String& name, const String& text) const
{
    constexpr int LONGEST = INT32_MAX / static_cast<int>(sizeof(char16_t)) - 1;
    if (text.getLength() > LONGEST)
        duringValue(u"set", name, [] { throwResult(RESULT_INVALID_ARGUMENT); });
    setValue(name, VX_REG_STRING, TerminatedText(text), (text.getLength() + 1) * static_cast<int>(sizeof(char16_t)));
}

void RegistryKey::setValue(const String& name, const signed char* data, std::int32_t length) const
{
    setValue(name, VX_REG_BINARY, data, length);
}

void RegistryKey::setValue(const String& text) const
{
    setValue(String(), text);
}

Reference<collections::ConstIterator<RegistryKey>> RegistryKey::getSubkeyIterator() const
{
    const Reference<RegKeyIterator> iterator(new RegKeyIterator(m_hive, m_key));
    return Reference<collections::ConstIterator<RegistryKey>>(
        new collections::ConstIterator<RegistryKey>(iterator.get()));
}

Reference<collections::ConstIterator<String>> RegistryKey::getValueIterator() const
{
    const Reference<RegKeyValueIterator> iterator(new RegKeyValueIterator(m_hive, m_key));
    return Reference<collections::ConstIterator<String>>(new collections::ConstIterator<String>(iterator.get()));
}

ENUM_VX_HKEY RegistryKey::extractVXHkey(String& key)
{
    const int end = key.indexOf(DELIMITER);
    const String name = key.substring(0, end);
    key = end != -1 ? key.substring(end + 1) : String();
    for (const HiveName& row : HIVE_NAMES) {
        if (name.compare(row.name, -1, true) == 0)
            return row.hive;
    }
    throw Exception(u"Unknown VX_HKEY");
}

HKEY__* RegistryKey::extractHkey(String& key)
{
    return rootOf(extractVXHkey(key));
}

void RegistryKey::normalize()
{
    for (int at = m_key.indexOf(u'/'); at != -1; at = m_key.indexOf(u'/', at + 1))
        m_key.setCharAt(at, DELIMITER);
    m_keyName = m_key.substring(m_key.lastIndexOf(DELIMITER) + 1);
}

template <class Work>
void RegistryKey::duringValue(std::u16string_view operation, const String& name, Work&& work) const
{
    during(
        operation,
        [&] {
            return name.view().empty() ? u"the default registry value of " + getKey()
                                       : u"registry value \"" + name + u"\" of " + getKey();
        },
        work);
}

void RegistryKey::setValue(const String& name, ENUM_VX_REG_TYPE type, const void* data, std::int32_t length) const
{
    duringValue(u"set", name,
        [&] { throwIfFailed(VXRegistrySetValue(m_hive, SystemName(m_key), SystemName(name), type, data, length)); });
}

std::int32_t RegistryKey::tryGetValue(const String& name, ENUM_VX_REG_TYPE type, void* data, std::int32_t& length) const
{
    if (!SystemName::isValid(m_key) || !SystemName::isValid(name)) {
        length = 0;
        return RESULT_INVALID_NAME;
    }
    ENUM_VX_REG_TYPE found {};
    const std::int32_t result
        = VXRegistryGetValue(m_hive, TerminatedText(m_key), TerminatedText(name), &found, data, &length);
    if (!failed(result) && found != type)
        throw Exception(u"Registry type mismatch");
    return result;
}

std::int32_t RegistryKey::tryGetValue(const String& name, ENUM_VX_REG_TYPE type, IByteBuffer& buffer) const
{
    constexpr int FIRST_ROOM = 1024;

    ByteWriteLock lock(buffer, FIRST_ROOM);
    std::int32_t length = FIRST_ROOM;
    std::int32_t result = tryGetValue(name, type, lock.data(), length);
    if (result == RESULT_BUFFER_TOO_SMALL) {
        lock.ensureCapacity(length);
        result = tryGetValue(name, type, lock.data(), length);
    }
    if (!failed(result))
        lock.setLength(length);
    return result;
}

template <class Number>
Number RegistryKey::getNumber(const String& name, ENUM_VX_REG_TYPE type) const
{
    Number number = 0;
    std::int32_t length = sizeof number;
    duringValue(u"read", name, [&] { throwIfFailed(tryGetValue(name, type, &number, length)); });
    return number;
}

} // namespace vx::util
