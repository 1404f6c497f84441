#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace vxsys::detail {

inline constexpr std::size_t REGISTRY_NAME_LIMIT = 255;

/// RESULT_NAME_TOO_LONG or RESULT_INVALID_NAME for a name that no key or value of the registry can have.
std::int32_t checkRegistryName(std::u16string_view name) noexcept;

/// The form of a name that is the same for all names that differ only in case.
std::u16string foldRegistryName(std::u16string_view name);
bool isSameRegistryName(std::u16string_view left, std::u16string_view right) noexcept;

/// One name in the path of a key.
struct RegistryStep {
    std::u16string_view name;
    /// The name of the key's folder. It is the same for names that differ only in case, and never leads out of the
    /// store.
    std::string fileName;
};

/// The path from a hive to a key. Empty names in `key` are skipped. The steps are views of `key`.
class RegistryPath {
public:
    std::int32_t assign(std::u16string_view key);

    const std::vector<RegistryStep>& steps() const noexcept { return m_steps; }

private:
    std::vector<RegistryStep> m_steps;
};

} // namespace vxsys::detail
