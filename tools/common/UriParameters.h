#pragma once

#include <vx/net/UriReference.h>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vxtools {

/// The parameters of a URI that a user has given. Their names may be in any letter case, and of several with one name
/// the last one counts.
class UriParameters {
public:
    UriParameters() = default;
    /// `text` is the URI for messages. Throws UsageError for a parameter that is not among `names`.
    UriParameters(
        const std::string& text, const vx::net::UriReference& uri, const std::vector<std::string_view>& names);

    std::optional<std::string> find(std::string_view name) const;
    bool has(std::string_view name) const { return find(name).has_value(); }
    /// Throws UsageError for anything but a whole number from `least` to `most`.
    std::optional<int> findNumber(std::string_view name, int least, int most) const;
    /// Throws UsageError for a value that is not in `values`, a list with ", " between them.
    void requireOneOf(std::string_view name, std::string_view values) const;

private:
    std::string m_text;
    std::vector<vx::net::UriReference::Parameter> m_parameters;
};

} // namespace vxtools
