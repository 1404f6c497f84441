#include "vxsys/detail/RegistryRecord.h"

#include "vxsys/detail/RegistryPath.h"

#include <cstdint>
#include <cstring>

namespace vxsys::detail {

namespace {

constexpr std::uint32_t SIGNATURE = 0x34525856; // "VXR4" on a machine with the low byte first
constexpr std::size_t UNITS_A_NUMBER = sizeof(std::uint32_t) / sizeof(char16_t);
static_assert(RegistryRecord::HEAD_UNITS == 2 * UNITS_A_NUMBER + REGISTRY_NAME_LIMIT);

/// Data is stored in whole units: if its length is odd, the last one ends with a zero byte.
constexpr std::size_t unitsOfBytes(std::size_t bytes) noexcept
{
    return bytes / sizeof(char16_t) + bytes % sizeof(char16_t);
}

class Source {
public:
    explicit Source(std::u16string_view units) noexcept
        : m_rest(units)
    {
    }

    bool take(std::size_t count, std::u16string_view& units) noexcept
    {
        if (count > m_rest.size())
            return false;
        units = m_rest.substr(0, count);
        m_rest.remove_prefix(count);
        return true;
    }
    bool take(std::uint32_t& number) noexcept
    {
        std::u16string_view units;
        if (!take(UNITS_A_NUMBER, units))
            return false;
        std::memcpy(&number, units.data(), sizeof number);
        return true;
    }
    bool takeText(std::u16string_view& text) noexcept
    {
        std::uint32_t length = 0;
        return take(length) && take(length, text);
    }
    bool takeHead(std::u16string_view& name) noexcept
    {
        std::uint32_t signature = 0;
        return take(signature) && signature == SIGNATURE && takeText(name) && name.size() <= REGISTRY_NAME_LIMIT;
    }
    bool takeValue(RegistryValue& value) noexcept
    {
        std::uint32_t type = 0;
        std::uint32_t length = 0;
        std::u16string_view units;
        if (!takeText(value.name) || !take(type) || !take(length) || type > VX_REG_BINARY || length > INT32_MAX
            || !take(unitsOfBytes(length), units))
            return false;
        value.type = static_cast<ENUM_VX_REG_TYPE>(type);
        value.data = {reinterpret_cast<const char*>(units.data()), length};
        return true;
    }
    bool isAtEnd() const noexcept { return m_rest.empty(); }
    std::size_t rest() const noexcept { return m_rest.size(); }

private:
    std::u16string_view m_rest;
};

void putNumber(std::u16string& target, std::size_t number)
{
    const auto value = static_cast<std::uint32_t>(number);
    char16_t units[UNITS_A_NUMBER];
    std::memcpy(units, &value, sizeof value);
    target.append(units, UNITS_A_NUMBER);
}

void putText(std::u16string& target, std::u16string_view text)
{
    putNumber(target, text.size());
    target.append(text);
}

void putValue(std::u16string& target, const RegistryValue& value)
{
    putText(target, value.name);
    putNumber(target, static_cast<std::size_t>(value.type));
    putNumber(target, value.data.size());
    const std::size_t start = target.size();
    target.resize(start + unitsOfBytes(value.data.size()));
    if (!value.data.empty())
        std::memcpy(target.data() + start, value.data.data(), value.data.size());
}

} // namespace

bool RegistryRecord::read(std::u16string_view units)
{
    Source source(units);
    std::uint32_t count = 0;
    values.clear();
    if (!source.takeHead(name) || !source.take(count))
        return false;
    for (; count > 0; --count) {
        RegistryValue value {};
        if (!source.takeValue(value))
            return false;
        values.push_back(value);
    }
    return source.isAtEnd();
}

bool RegistryRecord::readName(std::u16string_view head) noexcept
{
    return Source(head).takeHead(name);
}

std::u16string RegistryRecord::write() const
{
    std::u16string units;
    putNumber(units, SIGNATURE);
    putText(units, name);
    putNumber(units, values.size());
    for (const RegistryValue& value : values)
        putValue(units, value);
    return units;
}

bool RegistryPlace::find(std::u16string_view units, std::u16string_view name) noexcept
{
    *this = {};
    if (units.empty())
        return true;
    Source source(units);
    std::u16string_view keyName;
    if (!source.takeHead(keyName))
        return false;
    m_countPlace = units.size() - source.rest();
    if (!source.take(m_count))
        return false;
    m_start = m_end = units.size();
    for (std::uint32_t left = m_count; left > 0; --left) {
        const std::size_t start = units.size() - source.rest();
        RegistryValue value {};
        if (!source.takeValue(value))
            return false;
        if (m_isFound || !isSameRegistryName(value.name, name))
            continue;
        m_isFound = true;
        m_value = value;
        m_start = start;
        m_end = units.size() - source.rest();
    }
    return source.isAtEnd();
}

void RegistryPlace::put(std::u16string& units, const RegistryValue& value) const
{
    std::u16string written;
    putValue(written, m_isFound ? RegistryValue {m_value.name, value.type, value.data} : value);
    replace(units, written, m_isFound ? m_count : m_count + 1);
}

void RegistryPlace::remove(std::u16string& units) const
{
    replace(units, {}, m_count - 1);
}

void RegistryPlace::replace(std::u16string& units, std::u16string_view by, std::uint32_t count) const
{
    units.replace(m_start, m_end - m_start, by);
    std::memcpy(units.data() + m_countPlace, &count, sizeof count);
}

} // namespace vxsys::detail
