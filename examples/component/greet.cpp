// A program that lets the component greet each of its arguments, and then unloads the component's library.
#include "IGreeter.h"

#include "vx/Class.h"
#include "vx/Describe.h"
#include "vx/Exceptions.h"
#include "vx/Reference.h"
#include "vx/Result.h"
#include "vx/String.h"
#include "vx/TerminatedText.h"
#include "vx/util/RWCharBuffer.h"
#include "vx/vorb/CreateByProgId.h"
#include "vxsys/Component.h"

#include <cstdio>
#include <fstream>
#include <string>
#include <string_view>

namespace {

vx::String greetingFor(const vx::String& name)
{
    const auto greeter = vx::vorb::createByProgId<IGreeter>(u"Example.Greeter");
    const vx::Reference<vx::util::RWCharBuffer> text(new vx::util::RWCharBuffer);
    vx::throwIfFailed(greeter->Greet(vx::TerminatedText(name), text.get()));
    return vx::String(text->getData(), text->getLength());
}

/// Whether a file of that name is mapped into the process.
bool isInProcess(std::string_view name)
{
    std::ifstream maps("/proc/self/maps");
    for (std::string line; std::getline(maps, line);) {
        if (line.ends_with(name))
            return true;
    }
    return false;
}

bool isKnownClass(const char16_t* name)
{
    try {
        return vx::Class::forName(name) != nullptr;
    } catch (const vx::ClassNotFoundException&) {
        return false;
    }
}

} // namespace

int main(int count, char** arguments)
{
    try {
        for (int i = 1; i < count; ++i)
            std::printf("%s\n", greetingFor(arguments[i]).getBytes(u"UTF-8"));
    } catch (const vx::Exception& failure) {
        std::fprintf(stderr, "greet: %s\n", vx::explain(failure).toUtf8().c_str());
        return 1;
    }
    const bool wasKnown = isKnownClass(u"example::Greeter");
    const auto unloaded = static_cast<int>(VXComFreeUnusedLibraries());
    const bool isGone = !isInProcess("/greeter.so") && !isKnownClass(u"example::Greeter");
    std::printf("%d library unloaded, its class was %s, %s\n", unloaded, wasKnown ? "known" : "unknown",
        isGone ? "no trace of it left" : "but it is still there");
}
