#pragma once

#include "vxsys/Registry.h"
#include "vxsys/detail/RegistryPath.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace vxsys::detail {

struct RegistryValue {
    std::u16string_view name;
    ENUM_VX_REG_TYPE type;
    std::string_view data;
};

/// What the file of one key holds: the key's name as it was first written, and its values. Names and data are views: those of
/// a record that was read refer to the units that it was read from, which must stay.
struct RegistryRecord {
    /// No name ends after these first units of a record.
    static constexpr std::size_t HEAD_UNITS = 4 + REGISTRY_NAME_LIMIT;

    std::u16string_view name;
    std::vector<RegistryValue> values;

    /// False if the units are not, in every length, what `write` gives.
    bool read(std::u16string_view units);
    /// Reads the name alone, from a whole record or from the first `HEAD_UNITS` of one. False if no record begins so.
    bool readName(std::u16string_view head) noexcept;
    /// The content of the file. Numbers have the byte order of the machine, as the values have.
    std::u16string write() const;

    /// Null if there is none.
    RegistryValue* find(std::u16string_view name) noexcept;
};

} // namespace vxsys::detail
