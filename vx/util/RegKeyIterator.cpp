#include "vx/util/RegKeyIterator.h"

#include "vx/Exceptions.h"
#include "vx/Occasion.h"
#include "vx/Result.h"
#include "vx/TerminatedText.h"
#include "vx/collections/detail/Element.h"
#include "vx/util/RegistryKey.h"

namespace vx::util {

namespace {

using OpenEnum = std::int32_t (*)(ENUM_VX_HKEY hive, const char16_t* key, VXRegistryEnum* handle);

VXRegistryEnum open(OpenEnum openEnum, ENUM_VX_HKEY hive, const String& key)
{
    VXRegistryEnum handle = nullptr;
    during(
        u"list registry key", [&] { return RegistryKey(hive, key).getKey(); },
        [&] { throwIfFailed(openEnum(hive, SystemName(key), &handle)); });
    return handle;
}

} // namespace

RegistryIterator::RegistryIterator(VXRegistryEnum enumeration, const char16_t* atEnd) noexcept
    : m_enumeration(enumeration)
    , m_atEnd(atEnd)
{
}

RegistryIterator::~RegistryIterator() noexcept(false)
{
    VXRegistryCloseEnum(m_enumeration);
}

bool RegistryIterator::hasNext()
{
    m_current = fetch(m_enumeration);
    return m_current != nullptr;
}

Reference<IVXUnknown> RegistryIterator::next()
{
    if (m_current == nullptr && !hasNext())
        throw Exception(m_atEnd);
    return Reference<IVXUnknown>(collections::detail::toElement(m_current.get()));
}

RegKeyIterator::RegKeyIterator(ENUM_VX_HKEY hive, const String& key)
    : RegistryIterator(open(VXRegistryOpenKeyEnum, hive, key), u"no more keys")
    , m_hive(hive)
    , m_key(key)
{
}

RegKeyIterator::~RegKeyIterator() noexcept(false) = default;

Reference<Object> RegKeyIterator::fetch(VXRegistryEnum enumeration)
{
    char16_t name[LONGEST_NAME];
    std::int32_t length = LONGEST_NAME;
    if (failed(VXRegistryEnumNextKey(enumeration, name, &length)))
        return {};
    return Reference<Object>(new RegistryKey(m_hive, m_key + u"\\" + String(name, length)));
}

RegKeyValueIterator::RegKeyValueIterator(ENUM_VX_HKEY hive, const String& key)
    : RegistryIterator(open(VXRegistryOpenValueEnum, hive, key), u"no more values")
{
}

RegKeyValueIterator::~RegKeyValueIterator() noexcept(false) = default;

Reference<Object> RegKeyValueIterator::fetch(VXRegistryEnum enumeration)
{
    constexpr std::int32_t ROOM_FOR_DATA = 510;

    char16_t name[LONGEST_NAME];
    std::int32_t length = LONGEST_NAME;
    ENUM_VX_REG_TYPE type;
    signed char data[ROOM_FOR_DATA];
    std::int32_t dataLength = ROOM_FOR_DATA;
    if (failed(VXRegistryEnumNextValue(enumeration, name, &length, &type, data, &dataLength)))
        return {};
    return Reference<Object>(new String(name, length));
}

} // namespace vx::util
