#include "tests/AllocationProbe.h"

#include "vxsys/Memory.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

thread_local AllocationProbe* t_probe = nullptr;
constinit std::atomic<long> g_live = 0;
constinit std::atomic<bool> g_isCounting = false; ///< the allocations of all threads
constinit std::atomic<int> g_left = 0;

void* counted(void* memory) noexcept
{
    if (memory != nullptr)
        g_live.fetch_add(1, std::memory_order_relaxed);
    return memory;
}

void release(void* memory) noexcept
{
    if (memory != nullptr)
        g_live.fetch_sub(1, std::memory_order_relaxed);
    std::free(memory);
}

} // namespace

AllocationProbe::AllocationProbe(int failing) noexcept
    : m_failing(failing)
    , m_outer(t_probe)
{
    t_probe = this;
}

AllocationProbe::~AllocationProbe()
{
    t_probe = m_outer;
}

long AllocationProbe::live() noexcept
{
    return g_live.load(std::memory_order_relaxed);
}

void AllocationProbe::failOnAnyThread(int failing) noexcept
{
    g_isCounting = false;
    g_left = failing;
    g_isCounting = failing != 0;
}

bool AllocationProbe::hasFailedOnAnyThread() noexcept
{
    return g_isCounting && g_left <= 0;
}

bool AllocationProbe::next(std::size_t rawSize) noexcept
{
    if (g_isCounting && g_left.fetch_sub(1) == 1)
        return false;
    if (t_probe == nullptr)
        return true;
    if (rawSize != 0)
        t_probe->m_lastRawSize = rawSize;
    return ++t_probe->m_count != t_probe->m_failing;
}

void* VXMemAlloc(std::size_t bytes) noexcept
{
    return bytes != 0 && AllocationProbe::next(bytes) ? counted(std::malloc(bytes)) : nullptr;
}

void* VXMemRealloc(void* memory, std::size_t bytes) noexcept
{
    if (!AllocationProbe::next(bytes))
        return nullptr;
    void* const moved = std::realloc(memory, bytes != 0 ? bytes : 1);
    return memory == nullptr ? counted(moved) : moved;
}

void VXMemFree(void* memory) noexcept
{
    release(memory);
}

void* vxsys::allocate(std::size_t bytes)
{
    if (AllocationProbe::next(0)) {
        if (void* memory = counted(std::malloc(bytes != 0 ? bytes : 1)))
            return memory;
    }
    // As the platform layer does if the handler gives up.
    const VXNewHandler handler = VXSetNewHandler(nullptr);
    VXSetNewHandler(handler);
    if (handler != nullptr)
        handler();
    throw std::bad_alloc();
}

void vxsys::deallocate(void* memory) noexcept
{
    release(memory);
}

#ifdef __has_feature
#if __has_feature(thread_sanitizer)
#define VX_NEW_IS_TAKEN // called by the runtime of the sanitizer
#endif
#endif
#ifndef VX_NEW_IS_TAKEN

void* operator new(std::size_t bytes, const std::nothrow_t&) noexcept
{
    return AllocationProbe::next(0) ? counted(std::malloc(bytes != 0 ? bytes : 1)) : nullptr;
}

void* operator new(std::size_t bytes)
{
    if (void* memory = operator new(bytes, std::nothrow))
        return memory;
    throw std::bad_alloc();
}

void* operator new[](std::size_t bytes)
{
    return operator new(bytes);
}

void operator delete(void* memory) noexcept
{
    release(memory);
}

void operator delete(void* memory, std::size_t) noexcept
{
    release(memory);
}

void operator delete[](void* memory) noexcept
{
    release(memory);
}

void operator delete[](void* memory, std::size_t) noexcept
{
    release(memory);
}

#endif
