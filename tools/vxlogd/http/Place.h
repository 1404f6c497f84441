#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace vxlogd::http {

/// Where the page listens.
struct Place {
    std::string host; ///< without brackets
    std::uint16_t port = 0;
};

/// The place in "127.0.0.1:8080" or "[::1]:0"; nothing for other texts.
std::optional<Place> placeIn(const std::string& text);
/// Whether only this machine reaches it.
bool isLoopback(const Place& place);

} // namespace vxlogd::http
