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

    /// Null if there is none.
    RegistryValue* find(std::u16string_view wanted) noexcept;
};

} // namespace vxsys::detail
