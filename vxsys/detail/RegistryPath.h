#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace vxsys::detail {

inline constexpr std::size_t REGISTRY_NAME_LIMIT = 255;

/// RESULT_NAME_TOO_LONG or RESULT_INVALID_NAME for what cannot name a key or a value of the registry.
std::int32_t checkRegistryName(std::u16string_view name) noexcept;

/// What stands for a name where its case tells nothing.
std::u16string foldRegistryName(std::u16string_view name);
bool isSameRegistryName(std::u16string_view left, std::u16string_view right) noexcept;

/// One name on the way to a key.
struct RegistryStep {
    std::u16string_view name;
    /// The folder's: the same for every case of the name, and never one that leads elsewhere.
    std::string fileName;
};

/// The way from a hive to a key. Empty names in `key` count for nothing. The steps refer to its text.
class RegistryPath {
public:
    std::int32_t assign(std::u16string_view key);

    const std::vector<RegistryStep>& steps() const noexcept { return m_steps; }

private:
    std::vector<RegistryStep> m_steps;
};

} // namespace vxsys::detail
