#include "vx/vorb/ComponentClass.h"

#include "vx/Exceptions.h"
#include "vx/Result.h"
#include "vx/vorb/Boundary.h"
#include "vx/vorb/IVXClassFactory.h"
#include "vx/vorb/detail/ClassEntries.h"
#include "vxsys/Module.h"

#include <atomic>
#include <iterator>
#include <new>

namespace vx::vorb {

namespace {

class Factory final : public IVXClassFactory {
public:
    Factory(VXComponentModule& module, const VXComponentClass& row)
        : m_module(module)
        , m_row(row)
    {
        VXComponentLock(&m_module);
    }

    std::int32_t QueryInterface(const _GUID& iid, void** out) override
    {
        if (out == nullptr)
            return RESULT_POINTER;
        *out = nullptr;
        if (!(iid == IVXUnknown::IID) && !(iid == IVXClassFactory::IID))
            return RESULT_NO_INTERFACE;
        AddRef();
        *out = this;
        return RESULT_OK;
    }
    std::uint32_t AddRef() const override { return m_count.fetch_add(1, std::memory_order_relaxed) + 1; }
    std::uint32_t Release() const override
    {
        const std::uint32_t left = m_count.fetch_sub(1, std::memory_order_acq_rel) - 1;
        if (left == 0)
            delete this;
        return left;
    }

    std::int32_t CreateInstance(IVXUnknown* outer, const _GUID& iid, void** out) const override
    {
        if (out == nullptr)
            return RESULT_POINTER;
        *out = nullptr;
        if (outer != nullptr && !(iid == IVXUnknown::IID))
            return RESULT_INVALID_ARGUMENT;
        return resultAtBoundary([&] { return m_row.create(outer, &iid, out); });
    }
    std::int32_t LockServer(std::int16_t lock) override
    {
        lock != 0 ? VXComponentLock(&m_module) : VXComponentUnlock(&m_module);
        return RESULT_OK;
    }

private:
    ~Factory() { VXComponentUnlock(&m_module); }

    VXComponentModule& m_module;
    const VXComponentClass& m_row;
    mutable std::atomic<std::uint32_t> m_count {1};
};

/// Calls `work` with the entries and the row of each class until one throws.
template <class Work>
std::int32_t forEachClass(const VXComponentModule* module, Work work)
{
    if (module == nullptr)
        return RESULT_INVALID_ARGUMENT;
    return atBoundary([&] {
        for (const VXComponentClass* row = module->classes; row->classId != nullptr; ++row)
            work(detail::ClassEntries {*row->classId, row->progId, [row] { return row->versionIndependentProgId; }},
                *row);
    });
}

} // namespace

} // namespace vx::vorb

using namespace vx;

void VXComponentLock(VXComponentModule* module)
{
    std::atomic_ref(module->locks).fetch_add(1, std::memory_order_relaxed);
}

void VXComponentUnlock(VXComponentModule* module)
{
    std::atomic_ref(module->locks).fetch_sub(1, std::memory_order_acq_rel);
}

std::int32_t VXComponentGetClassObject(
    VXComponentModule* module, const _GUID* classId, const _GUID* iid, void** factory)
{
    if (factory == nullptr)
        return RESULT_POINTER;
    *factory = nullptr;
    if (module == nullptr || classId == nullptr || iid == nullptr)
        return RESULT_INVALID_ARGUMENT;
    for (const VXComponentClass* row = module->classes; row->classId != nullptr; ++row) {
        if (*row->classId == *classId) {
            auto* const made = new (std::nothrow) vorb::Factory(*module, *row);
            if (made == nullptr)
                return RESULT_OUT_OF_MEMORY;
            const std::int32_t result = made->QueryInterface(*iid, factory);
            made->Release();
            return result;
        }
    }
    return RESULT_CLASS_NOT_AVAILABLE;
}

std::int32_t VXComponentCanUnloadNow(VXComponentModule* module)
{
    return std::atomic_ref(module->locks).load(std::memory_order_acquire) == 0 ? RESULT_OK : RESULT_FALSE;
}

std::int32_t VXComponentRegisterServer(VXComponentModule* module)
{
    char16_t path[4096];
    if (const std::int32_t result = VXModuleGetFileName(module, path, std::size(path)); failed(result))
        return result;
    return vorb::forEachClass(module, [&](const vorb::detail::ClassEntries& entries, const VXComponentClass& row) {
        entries.set(row.description);
        entries.setLibrary(path);
    });
}

std::int32_t VXComponentUnregisterServer(VXComponentModule* module)
{
    return vorb::forEachClass(
        module, [](const vorb::detail::ClassEntries& entries, const VXComponentClass&) { entries.remove(); });
}
