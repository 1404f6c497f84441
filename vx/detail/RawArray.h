#pragma once

#include "vxsys/Memory.h"

#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <new>
#include <type_traits>

namespace vx::detail {

struct RawArrayDeleter {
    void operator()(void* memory) const noexcept { VXMemFree(memory); }
};

/// Owns an array from the C runtime's allocator. It does not store the length.
template <class Unit>
using RawArray = std::unique_ptr<Unit[], RawArrayDeleter>;

/// Allocates `count` uninitialised units; null for 0. Throws std::bad_alloc if memory is exhausted or `count` is
/// negative.
template <class Unit>
RawArray<Unit> makeRawArray(std::int64_t count)
{
    static_assert(std::is_trivial_v<Unit>);
    if (count == 0)
        return nullptr;
    if (count < 0 || static_cast<std::uint64_t>(count) > std::numeric_limits<std::size_t>::max() / sizeof(Unit))
        throw std::bad_alloc();
    void* memory = VXMemAlloc(static_cast<std::size_t>(count) * sizeof(Unit));
    if (memory == nullptr)
        throw std::bad_alloc();
    return RawArray<Unit>(static_cast<Unit*>(memory));
}

} // namespace vx::detail
