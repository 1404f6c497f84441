#pragma once

#include <cstring>

namespace vx::crypto::detail {

/// Clears memory that nobody reads again, so that secrets do not outlive their use. A plain memset would be left out.
template <class Secret>
void wipe(Secret& secret) noexcept
{
    void* (*const volatile fill)(void*, int, std::size_t) = std::memset;
    fill(&secret, 0, sizeof secret);
}

} // namespace vx::crypto::detail
