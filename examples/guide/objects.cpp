#include <vx/vxlib4.h>

#include <iostream>

using namespace vx;

class IGreeter : public IVXUnknown {
public:
    using InterfaceType = IGreeter;
    static constexpr _GUID IID {0x6F3B1C52, 0x8A0D, 0x4E47, {0x9C, 0x11, 0x52, 0xD7, 0x0E, 0x3A, 0x64, 0xB8}};

    virtual std::int32_t Greet(const char16_t* name, IVXCharBuffer* out) = 0;

protected:
    ~IGreeter() = default;
};

class Greeter : public Object, public IGreeter {
public:
    VX_OBJECT_UNKNOWN(Object)
    static const vorb::InterfaceData* GetComIntfMap()
    {
        static const vorb::InterfaceData map[]
            = {vorb::viewRow<Greeter, IGreeter>(), vorb::forwardRow<Object>(), vorb::endRow()};
        return map;
    }
    ~Greeter() noexcept override { std::cout << "The greeter is gone.\n"; }

    // IGreeter
    std::int32_t Greet(const char16_t* name, IVXCharBuffer* out) override
    {
        return vorb::atBoundary([&] {
            if (name == nullptr)
                throw ResultException(RESULT_POINTER);
            String text;
            text.format(u"Hello, {0}.", -1, name);
            VXCopyCharBuffer(out, &text);
        });
    }
};

int main()
{
    Reference<Object> object(new Greeter); // count 1
    Reference<IGreeter> greeter(object.get()); // asked for the interface: count 2
    object = nullptr; // count 1, and the object lives on

    String text;
    throwIfFailed(greeter->Greet(u"Δήμητρα", &text));
    std::cout << text << '\n';

    try {
        throwIfFailed(greeter->Greet(nullptr, &text));
    } catch (const Exception& failure) {
        std::cout << std::hex << std::showbase << static_cast<std::uint32_t>(failure.getResult()) << '\n';
    }
    greeter = nullptr; // count 0
}
