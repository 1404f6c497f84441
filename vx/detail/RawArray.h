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

/// Sole owner of plain units from the C runtime's allocator. It knows no length.
template <class Unit>
using RawArray = std::unique_ptr<Unit[], RawArrayDeleter>;

/// `count` units without a value; null for 0. Exhaustion and a negative count throw std::bad_alloc.
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
