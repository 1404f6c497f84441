#pragma once

#include "vx/util/OptionTable.h"

#include <string>
#include <string_view>
#include <vector>

namespace vx::util::detail {

struct OptionRows {
    /// Throws Exception for a name that no row has.
    const OptionRow& rowOf(std::string_view name) const;
    /// The row with the name, or else all whose names begin with it.
    std::vector<const OptionRow*> candidatesOf(std::string_view name) const;
    /// The row with the name, or else the only one whose name begins with it. Throws OptionException.
    const OptionRow& rowOfWritten(std::string_view name, const std::string& written) const;
    /// Null if there is none.
    const OptionRow* rowOfLetter(char letter) const;

    std::string program;
    std::vector<OptionRow> rows;
};

/// The only values of an option; empty if it takes others too.
std::vector<std::string_view> wordsOf(const OptionRow& row);

} // namespace vx::util::detail
