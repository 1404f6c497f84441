#pragma once

#include <array>
#include <cstdint>
#include <string_view>

namespace vxsys::detail {

/// SHA-256 (FIPS 180-4) of a text.
std::array<std::uint8_t, 32> sha256(std::string_view text) noexcept;

} // namespace vxsys::detail
