#include "vxsys/Named.h"

#include "vxsys/Result.h"
#include "vxsys/ThreadAnnotations.h"
#include "vxsys/detail/Chain.h"
#include "vxsys/detail/StateLock.h"
#include "vxsys/posix/NamedObject.h"

#include <cerrno>
#include <new>
#include <sys/mman.h>

namespace {

using namespace vxsys::results;
using namespace vxsys::detail;

constexpr std::uint32_t KNOWN_ACCESS = VX_FILE_READ | VX_FILE_WRITE;
constexpr std::uint32_t KNOWN_FLAGS = VX_SHARED_MEMORY_CREATE | VX_SHARED_MEMORY_EXCLUSIVE;

/// A use of a named object: an open handle, or an address at which the memory is attached.
struct MemoryUse {
    NamedObject* object;
    std::uint32_t handle;
    std::uint32_t access;
    void* address;
    MemoryUse* next;
};

constinit MemoryUse* g_handles VX_GUARDED_BY(g_namedLock) = nullptr;
constinit MemoryUse* g_attached VX_GUARDED_BY(g_namedLock) = nullptr;
constinit std::uint32_t g_lastHandle VX_GUARDED_BY(g_namedLock) = 0;

MemoryUse** findHandle(std::uint32_t handle) noexcept VX_REQUIRES(g_namedLock)
{
    return findPlace(g_handles, [&](const MemoryUse& use) { return use.handle == handle; });
}

/// A number that is neither in use nor the invalid handle.
std::uint32_t newHandle() noexcept VX_REQUIRES(g_namedLock)
{
    do
        ++g_lastHandle;
    while (g_lastHandle == VX_FILE_INVALID_HANDLE || *findHandle(g_lastHandle) != nullptr);
    return g_lastHandle;
}

int openMemory(const char* name, std::uint32_t access, const NamedOpening& opening, std::uint32_t* handle) noexcept
{
    const StateGuard guard(g_namedLock);
    auto* use = new (std::nothrow) MemoryUse {};
    if (use == nullptr)
        return ENOMEM;
    if (const int error = NamedObject::open(name, opening, &use->object)) {
        delete use;
        return error;
    }
    use->handle = newHandle();
    use->access = access;
    pushFront(g_handles, use);
    *handle = use->handle;
    return 0;
}

int attach(const MemoryUse& handle, std::uint32_t access, void** address) noexcept VX_REQUIRES(g_namedLock)
{
    auto* use = new (std::nothrow) MemoryUse {handle.object, 0, access, nullptr, nullptr};
    if (use == nullptr)
        return ENOMEM;
    const int protection
        = ((access & VX_FILE_READ) != 0 ? PROT_READ : 0) | ((access & VX_FILE_WRITE) != 0 ? PROT_WRITE : 0);
    if (const int error = handle.object->mapMemory(protection, &use->address)) {
        delete use;
        return error;
    }
    use->object->use();
    pushFront(g_attached, use);
    *address = use->address;
    return 0;
}

void end(MemoryUse** place) noexcept VX_REQUIRES(g_namedLock)
{
    MemoryUse* const use = unlink(place);
    use->object->release();
    delete use;
}

} // namespace

std::int32_t VXSharedMemOpen(
    const char* name, std::uint32_t access, std::uint32_t flags, std::uint32_t size, std::uint32_t* handle) noexcept
{
    if (handle == nullptr)
        return RESULT_INVALID_ARGUMENT;
    *handle = VX_FILE_INVALID_HANDLE;
    if (name == nullptr || access == 0 || (access & ~KNOWN_ACCESS) != 0 || (flags & ~KNOWN_FLAGS) != 0)
        return RESULT_INVALID_ARGUMENT;
    return VXResultFromNative(openMemory(name, access,
        {.kind = NamedOpening::MEMORY,
            .size = size,
            .mayMake = (flags & VX_SHARED_MEMORY_CREATE) != 0,
            .mustMake = (flags & VX_SHARED_MEMORY_EXCLUSIVE) != 0},
        handle));
}

std::int32_t VXSharedMemAttach(std::uint32_t handle, std::uint32_t access, void** address) noexcept
{
    if (address == nullptr)
        return RESULT_INVALID_ARGUMENT;
    *address = nullptr;
    const StateGuard guard(g_namedLock);
    const MemoryUse* const use = *findHandle(handle);
    if (use == nullptr)
        return RESULT_INVALID_HANDLE;
    if (access == 0 || (access & ~KNOWN_ACCESS) != 0)
        return RESULT_INVALID_ARGUMENT;
    if ((access & ~use->access) != 0)
        return RESULT_ACCESS_DENIED;
    return VXResultFromNative(attach(*use, access, address));
}

std::int32_t VXSharedMemDetach(void* address) noexcept
{
    const StateGuard guard(g_namedLock);
    MemoryUse** const place = findPlace(g_attached, [&](const MemoryUse& use) { return use.address == address; });
    if (address == nullptr || *place == nullptr)
        return RESULT_INVALID_ARGUMENT;
    ::munmap(address, (*place)->object->size());
    end(place);
    return RESULT_OK;
}

std::int32_t VXSharedMemClose(std::uint32_t handle) noexcept
{
    const StateGuard guard(g_namedLock);
    MemoryUse** const place = findHandle(handle);
    if (*place == nullptr)
        return RESULT_INVALID_HANDLE;
    end(place);
    return RESULT_OK;
}
