#pragma once

#include <cstring>

namespace vx::crypto::detail {

/// Clears memory that is not read again, so that secrets do not stay in it. A compiler would remove a plain memset.
template <class Secret>
void wipe(Secret& secret) noexcept
{
    void* (*const volatile fill)(void*, int, std::size_t) = std::memset;
    fill(&secret, 0, sizeof secret);
}

} // namespace vx::crypto::detail
