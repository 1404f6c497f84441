#include "vx/vorb/ClassFactory.h"

#include "vx/Result.h"
#include "vx/vorb/Boundary.h"
#include "vx/vorb/Component.h"

namespace vx::vorb {

std::int32_t ClassFactoryFace::CreateInstance(IVXUnknown* outer, const _GUID& iid, void** out) const
{
    if (out == nullptr)
        return RESULT_POINTER;
    *out = nullptr;
    if (outer != nullptr && !(iid == IVXUnknown::IID))
        return RESULT_INVALID_ARGUMENT;
    const auto& factory = static_cast<const ClassFactory&>(*this);
    if (factory.m_instanceCreator == nullptr)
        return RESULT_FAIL;
    return resultAtBoundary([&] { return factory.m_instanceCreator(factory.GetComModule(), outer, iid, out); });
}

std::int32_t ClassFactoryFace::LockServer(std::int16_t lock)
{
    Module* module = static_cast<ClassFactory&>(*this).GetComModule();
    if (module == nullptr)
        return RESULT_FAIL;
    if (lock != 0)
        module->AddRef();
    else
        module->Release();
    return RESULT_OK;
}

ClassFactory::~ClassFactory() noexcept(false) = default;

const InterfaceData* ClassFactory::GetComIntfMap()
{
    static const InterfaceData map[] = {viewRow<ClassFactory, IVXClassFactory>(), endRow()};
    return map;
}

namespace {

/// Refers to its module but takes no lock on it: the module owns the factory, which must not keep the library loaded.
class ComponentFactory final : public ClassFactory {
public:
    ComponentFactory(Module* module, InstanceCreator creator) noexcept
    {
        SetComModule(module);
        SetCreateInstanceQIFunc(creator);
    }

    std::uint32_t AddRef() const override { return InternalAddRef(); }
    std::uint32_t Release() const override
    {
        const std::uint32_t count = InternalRelease();
        if (count != 0)
            return count;
        // Without a module the base class releases no lock.
        const_cast<ComponentFactory*>(this)->SetComModule(nullptr);
        InternalAddRef();
        return ClassFactory::Release();
    }
};

} // namespace

std::int32_t createComponentFactory(Module* module, InstanceCreator creator, const _GUID& iid, void** out)
{
    if (out == nullptr)
        return RESULT_POINTER;
    *out = nullptr;
    return resultAtBoundary([&] {
        const Reference<ClassFactory> factory(new ComponentFactory(module, creator));
        return factory->QueryInterface(iid, out);
    });
}

} // namespace vx::vorb
