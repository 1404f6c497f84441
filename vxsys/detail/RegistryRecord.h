#pragma once

#include "vxsys/Registry.h"

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

/// What the file of one key holds: the key's name in its own case, and its values. Names and data are texts elsewhere:
/// those of a record that was read lie in the units that it was read from, which must stay.
struct RegistryRecord {
    std::u16string_view name;
    std::vector<RegistryValue> values;

    /// False where the units are not, in every length, what `write` gives.
    bool read(std::u16string_view units);
    /// The content of the file. Numbers have the byte order of the machine, as the values have.
    std::u16string write() const;

    /// Null where there is none.
    RegistryValue* find(std::u16string_view name) noexcept;
};

} // namespace vxsys::detail
