#include "vx/ComObject.h"

#include "vx/Result.h"
#include "vx/vorb/Module.h"
#include "vxsys/Memory.h"

namespace vx {

ComObject::ComObject(const ComObject& other) noexcept
    : IVXUnknown()
    , m_refCount(other.GetRefCount())
    , m_module(other.m_module)
{
}

ComObject& ComObject::operator=(const ComObject& other) noexcept
{
    m_refCount.store(other.GetRefCount(), std::memory_order_relaxed);
    m_module = other.m_module;
    return *this;
}

ComObject::~ComObject() noexcept(false) = default;

void* ComObject::operator new(std::size_t bytes)
{
    return vxsys::allocate(bytes);
}

void ComObject::operator delete(void* memory) noexcept
{
    vxsys::deallocate(memory);
}

void* ComObject::operator new(std::size_t bytes, std::align_val_t alignment)
{
    return vxsys::allocate(bytes, alignment);
}

void ComObject::operator delete(void* memory, std::align_val_t) noexcept
{
    vxsys::deallocate(memory);
}

std::int32_t ComObject::QueryInterface(const _GUID& iid, void** out)
{
    return vorb::QueryInterfaceMap(GetComIntfMap(), this, iid, out);
}

void ComObject::lockModule() const noexcept
{
    m_module->AddRef();
}

void ComObject::destroy() const
{
    if (m_module != nullptr)
        m_module->Release();
    // If the destructor makes a `Reference` to `this`, the count goes from 1 to 2 and back, and nothing is destroyed twice.
    m_refCount.store(1, std::memory_order_relaxed);
    delete this;
}

std::int32_t ComObject::SetOuterUnknown(IVXUnknown*) noexcept
{
    return RESULT_NO_AGGREGATION;
}

const vorb::InterfaceData* ComObject::GetComIntfMap()
{
    static const vorb::InterfaceData map[] = {vorb::viewRow<ComObject, IVXUnknown>(), vorb::endRow()};
    return map;
}

} // namespace vx
