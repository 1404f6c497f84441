#include "vxsys/Memory.h"

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <new>

namespace {

constinit std::atomic<VXNewHandler> g_newHandler {nullptr};

/// Calls `attempt` until it returns memory. Between two attempts the new handler frees memory, or throws.
template <class Attempt>
void* allocateBy(Attempt attempt)
{
    for (;;) {
        if (void* memory = attempt())
            return memory;
        const VXNewHandler handler = g_newHandler.load();
        if (handler == nullptr)
            throw std::bad_alloc();
        handler();
    }
}

} // namespace

VXNewHandler VXSetNewHandler(VXNewHandler handler) noexcept
{
    return g_newHandler.exchange(handler);
}

void* VXMemAlloc(std::size_t bytes) noexcept
{
    return bytes != 0 ? std::malloc(bytes) : nullptr;
}

void* VXMemRealloc(void* memory, std::size_t bytes) noexcept
{
    return std::realloc(memory, bytes != 0 ? bytes : 1);
}

void VXMemFree(void* memory) noexcept
{
    std::free(memory);
}

namespace vxsys {

void* allocate(std::size_t bytes)
{
    return allocateBy([=] { return VXMemAlloc(bytes != 0 ? bytes : 1); });
}

void* allocate(std::size_t bytes, std::align_val_t alignment)
{
    return allocateBy([=] {
        void* memory = nullptr;
        const int failure = ::posix_memalign(
            &memory, std::max(static_cast<std::size_t>(alignment), sizeof(void*)), bytes != 0 ? bytes : 1);
        return failure == 0 ? memory : nullptr;
    });
}

void deallocate(void* memory) noexcept
{
    VXMemFree(memory);
}

} // namespace vxsys
