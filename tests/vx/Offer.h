#pragma once

#include "tests/vx/Common.h"
#include "vx/Object.h"
#include "vxsys/Component.h"

namespace vx {

/// Offers a component in the process to the end of the block. For each creation `make` returns a new object.
class Offer {
public:
    using Make = std::function<Reference<IVXUnknown>()>;

    Offer(const char16_t* progId, Make make)
        : m_make(std::move(make))
    {
        EXPECT_EQ(VXComGenerateGUID(&m_classId), RESULT_OK);
        EXPECT_EQ(VXComRegisterClassObject(progId, &m_classId, create, this, &m_token), RESULT_OK);
    }
    ~Offer() { EXPECT_EQ(VXComRevokeClassObject(m_token), RESULT_OK); }
    Offer(const Offer&) = delete;
    Offer& operator=(const Offer&) = delete;

private:
    static std::int32_t create(void* context, IVXUnknown*, const _GUID* iid, void** object)
    {
        const Reference<IVXUnknown> made = static_cast<Offer*>(context)->m_make();
        return made != nullptr ? made->QueryInterface(*iid, object) : RESULT_FAIL;
    }

    Make m_make;
    _GUID m_classId {};
    std::uint32_t m_token = 0;
};

/// Combines `Interface` with the object base, for components of the tests.
template <class Interface>
class Component : public Object, public Interface {
public:
    VX_OBJECT_UNKNOWN(Object)
    static const vorb::InterfaceData* GetComIntfMap()
    {
        static const vorb::InterfaceData map[]
            = {vorb::viewRow<Component, Interface>(), vorb::forwardRow<Object>(), vorb::endRow()};
        return map;
    }
};

} // namespace vx
