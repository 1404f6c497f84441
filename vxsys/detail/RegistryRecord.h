#pragma once

#include "vxsys/Registry.h"
#include "vxsys/detail/RegistryPath.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace vxsys::detail {

struct RegistryValue {
    std::u16string_view name;
    ENUM_VX_REG_TYPE type;
    std::string_view data;
};

/// The content of the file of one key: the name of the key as it was first written, and its values. Names and data are
/// views: those of a record that was read refer to the units that were read, which must stay valid.
struct RegistryRecord {
    /// The name ends within this number of units from the start of a record.
    static constexpr std::size_t HEAD_UNITS = 4 + REGISTRY_NAME_LIMIT;

    std::u16string_view name;
    std::vector<RegistryValue> values;

    /// False if `write` could not have written the units.
    bool read(std::u16string_view units);
    /// Reads only the name, from a whole record or from its first `HEAD_UNITS` units. False if this is not the start of
    /// a record.
    bool readName(std::u16string_view head) noexcept;
    /// The content of the file. Numbers have the byte order of the machine, as the values do.
    std::u16string write() const;
};

/// One value in the units of a record, which is found and changed without the others. No units at all are a record
/// without values.
class RegistryPlace {
public:
    /// False if `RegistryRecord::read` would be false. The value is valid as long as the units are.
    bool find(std::u16string_view units, std::u16string_view name) noexcept;

    /// Null if there is none.
    const RegistryValue* value() const noexcept { return m_isFound ? &m_value : nullptr; }

    /// Replaces the value, or adds it after the others. `units` are those in which it was looked for, and not empty.
    void put(std::u16string& units, const RegistryValue& value) const;
    /// Removes the value, which was found.
    void remove(std::u16string& units) const;

private:
    void replace(std::u16string& units, std::u16string_view by, std::uint32_t count) const;

    RegistryValue m_value {};
    bool m_isFound = false;
    std::uint32_t m_count = 0; ///< of all values
    std::size_t m_countPlace = 0;
    std::size_t m_start = 0; ///< the end of the units if the value was not found
    std::size_t m_end = 0;
};

} // namespace vxsys::detail
