#include "tests/vx/collections/FailingStorage.h"

#include "vxsys/Memory.h"

#include <cstdlib>
#include <new>

namespace vx::collections {

bool g_storageFails = false;
std::vector<std::size_t>* g_sizesAsked = nullptr;

} // namespace vx::collections

using namespace vx::collections;

void* VXMemAlloc(std::size_t bytes) noexcept
{
    return g_storageFails || bytes == 0 ? nullptr : std::malloc(bytes);
}

void* VXMemRealloc(void* memory, std::size_t bytes) noexcept
{
    if (g_sizesAsked != nullptr)
        g_sizesAsked->push_back(bytes);
    return g_storageFails ? nullptr : std::realloc(memory, bytes != 0 ? bytes : 1);
}

void* vxsys::allocate(std::size_t bytes)
{
    if (void* memory = VXMemAlloc(bytes != 0 ? bytes : 1))
        return memory;
    throw std::bad_alloc();
}
