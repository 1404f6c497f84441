#include "vxsys/Memory.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

constinit std::atomic<VXNewHandler> g_newHandler {nullptr};

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
    for (;;) {
        if (void* memory = VXMemAlloc(bytes != 0 ? bytes : 1))
            return memory;
        const VXNewHandler handler = g_newHandler.load();
        if (handler == nullptr)
            throw std::bad_alloc();
        handler();
    }
}

void deallocate(void* memory) noexcept
{
    VXMemFree(memory);
}

} // namespace vxsys
