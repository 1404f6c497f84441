// A component library with one class. Programs find it by the name "Example.Greeter".
#include "IGreeter.h"

#include "vx/ClassManagerBase.h"
#include "vx/Object.h"
#include "vx/String.h"
#include "vx/util/BufferLocks.h"
#include "vx/vorb/Component.h"

namespace {

class Greeter : public vx::Object, public IGreeter {
public:
    VX_OBJECT_UNKNOWN(Object)
    static const vx::vorb::InterfaceData* GetComIntfMap()
    {
        static const vx::vorb::InterfaceData map[]
            = {vx::vorb::viewRow<Greeter, IGreeter>(), vx::vorb::forwardRow<Object>(), vx::vorb::endRow()};
        return map;
    }

    // What registration writes
    static const char16_t* GetComProgID() { return u"Example.Greeter.1"; }
    static const char16_t* GetComVersionIndependentProgID() { return u"Example.Greeter"; }
    static const char16_t* GetComDescription() { return u"Greets by name"; }

    // IGreeter: a failure is the result, never an exception
    std::int32_t Greet(const char16_t* name, IVXCharBuffer* text) override
    {
        if (name == nullptr || text == nullptr)
            return vx::RESULT_POINTER;
        return vx::vorb::atBoundary([&] {
            const vx::String greeting = vx::String(u"Hello, ") + name + u"!";
            vx::util::CharWriteLock lock(*text, greeting.getLength());
            greeting.view().copy(lock.data(), greeting.view().size());
            lock.setLength(greeting.getLength());
        });
    }
};

constexpr _GUID GREETER {0x7B1F2A60, 0x9D5E, 0x4C37, {0x8E, 0x21, 0x44, 0x90, 0xD3, 0x5A, 0x6F, 0x02}};

vx::vorb::DllModule& getModule()
{
    static vx::vorb::ClassData s_classes[] = {vx::vorb::componentRow<Greeter>(GREETER), {}};
    static vx::vorb::DllModule s_module(s_classes);
    return s_module;
}

vx::Object* createGreeter()
{
    auto* greeter = new Greeter;
    greeter->SetComModule(&getModule()); // keeps the library loaded as long as the object lives
    return greeter;
}

// The class is known by name until the library is unloaded.
const vx::ClassRegistration g_greeterClass(u"example::Greeter", &typeid(Greeter), createGreeter);

} // namespace

VX_COMPONENT_LIBRARY(getModule())
