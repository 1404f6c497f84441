#pragma once

#include "vxsys/Api.h"

#include <stddef.h>
#ifdef __cplusplus
#include <cstddef>
#include <limits>
#include <new>
#endif

/// Called when `vxsys::allocate` finds no memory. It frees memory and returns, or throws.
typedef void (*VXNewHandler)(void);

#ifdef __cplusplus
extern "C" {
#endif

/// Installs `handler` (null: none) and returns the previous one. Thread-safe.
VXSYS_API VXNewHandler VXSetNewHandler(VXNewHandler handler) VXSYS_NOEXCEPT;

/// Raw storage from the C runtime's allocator. Null if memory is exhausted or the size is 0. No new handler is called.
VXSYS_API void* VXMemAlloc(size_t bytes) VXSYS_NOEXCEPT;
/// As the C runtime's `realloc`: if memory is exhausted, returns null and leaves `memory` unchanged. A `bytes` of 0 is
/// taken as 1, so it never frees.
VXSYS_API void* VXMemRealloc(void* memory, size_t bytes) VXSYS_NOEXCEPT;
/// Null is allowed.
VXSYS_API void VXMemFree(void* memory) VXSYS_NOEXCEPT;

#ifdef __cplusplus
}

namespace vxsys {

/// Storage for objects. If memory is exhausted, it calls the new handler and tries again; without a handler it throws
/// `std::bad_alloc`. Never null.
VXSYS_API void* allocate(std::size_t bytes);
/// The same at an address that is a multiple of `alignment`, a power of two.
VXSYS_API void* allocate(std::size_t bytes, std::align_val_t alignment);
/// Frees what either `allocate` returned. Null is allowed.
VXSYS_API void deallocate(void* memory) noexcept;

/// The storage of `allocate` for the containers of the standard library.
template <class T>
struct Allocator {
    using value_type = T;

    Allocator() noexcept = default;
    template <class Other>
    Allocator(const Allocator<Other>&) noexcept
    {
    }

    T* allocate(std::size_t count)
    {
        if (count > std::numeric_limits<std::size_t>::max() / sizeof(T))
            throw std::bad_array_new_length();
        if constexpr (alignof(T) > __STDCPP_DEFAULT_NEW_ALIGNMENT__)
            return static_cast<T*>(vxsys::allocate(count * sizeof(T), std::align_val_t(alignof(T))));
        else
            return static_cast<T*>(vxsys::allocate(count * sizeof(T)));
    }
    void deallocate(T* memory, std::size_t) noexcept { vxsys::deallocate(memory); }

    friend bool operator==(const Allocator&, const Allocator&) noexcept { return true; }
};

} // namespace vxsys
#endif
