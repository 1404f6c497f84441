#pragma once

#include "vx/ComObject.h"
#include "vx/vorb/ClassData.h"
#include "vx/vorb/IVXClassFactory.h"

namespace vx::vorb {

/// The `IVXClassFactory` view of `ClassFactory`.
class VX_API ClassFactoryFace : public IVXClassFactory {
public:
    std::int32_t CreateInstance(IVXUnknown* outer, const _GUID& iid, void** out) const override;
    std::int32_t LockServer(std::int16_t lock) override;

protected:
    ClassFactoryFace() = default;
    ~ClassFactoryFace() = default;
};

/// The factory of one class of a component library. Its creator sets its module and its instance creator before the
/// first use; without them its operations return RESULT_FAIL.
class VX_API ClassFactory : public ComObject, public ClassFactoryFace {
public:
    ClassFactory() noexcept = default;
    ~ClassFactory() noexcept(false) override;

    VX_OBJECT_UNKNOWN(ComObject)
    static const InterfaceData* GetComIntfMap();

    /// The function that creates an object and returns the requested interface of it.
    void SetCreateInstanceQIFunc(InstanceCreator creator) noexcept { m_instanceCreator = creator; }

private:
    friend class ClassFactoryFace;

    InstanceCreator m_instanceCreator = nullptr;
};

} // namespace vx::vorb
