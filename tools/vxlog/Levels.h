#pragma once

#include <vx/String.h>

#include <optional>
#include <string>

namespace vxlog {

/// Finds the level of each line.
class Levels {
public:
    /// `form` is empty, "prefix" or "json:FIELD". Lines in which no level is found have the level `otherwise`.
    Levels(const std::string& form, int otherwise);

    static bool isForm(const std::string& form);

    /// A prefix is removed from the line.
    int takeFrom(vx::String& line) const;

private:
    std::optional<std::u16string> m_field;
    bool m_hasPrefix;
    int m_otherwise;
};

} // namespace vxlog
