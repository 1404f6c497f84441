// A component library without the library. The variable FAULT selects what is wrong with it.
#include "vxsys/Guid.h"
#include "vxsys/Module.h"
#include "vxsys/Registry.h"
#include "vxsys/Result.h"

#include <csignal>
#include <cstdlib>
#include <pthread.h>
#include <string>
#include <string_view>
#include <unistd.h>

#ifdef UNIQUE
asm(".pushsection .data\n.globl only_one\n.type only_one, @gnu_unique_object\n.size only_one, 4\nonly_one: .long 0\n"
    ".popsection");
#endif

#define ENTRY_POINT extern "C" __attribute__((visibility("default"))) std::int32_t

namespace {

const std::u16string CLASS = u"CLSID\\{00000077-0000-0000-0000-000000000000}";
const std::u16string OTHER_CLASS = u"{00000078-0000-0000-0000-000000000000}";

bool has(std::string_view fault)
{
    const char* value = std::getenv("FAULT");
    return value != nullptr && value == fault;
}

void set(const std::u16string& key, const std::u16string& text)
{
    VXRegistrySetValue(VX_HKEY_CLASSES_32, key.c_str(), u"", VX_REG_STRING, text.c_str(),
        static_cast<std::int32_t>(2 * text.size() + 2));
}

} // namespace

ENTRY_POINT VXGetClassObject(const _GUID*, const _GUID*, void**)
{
    pthread_t thread;
    // Not a function of this library, which may be gone before the thread begins.
    const auto waitForever = reinterpret_cast<void* (*)(void*)>(reinterpret_cast<void*>(&::pause));
    if (has("killed"))
        ::raise(SIGKILL);
    if (has("ended"))
        ::_exit(7);
    if (has("silent")) {
        for (int file = 3; file < 256; ++file)
            ::close(file);
        ::pause();
    }
    if (has("thread"))
        ::pthread_create(&thread, nullptr, waitForever, nullptr);
    return vxsys::results::RESULT_CLASS_NOT_AVAILABLE;
}

ENTRY_POINT VXCanUnloadNow()
{
    return has("in use");
}

ENTRY_POINT VXRegisterServer()
{
    if (has("unregistrable"))
        return vxsys::results::RESULT_DISK_FULL;
    char16_t path[260];
    VXModuleGetFileName(reinterpret_cast<const void*>(&has), path, 260);
    set(CLASS + u"\\InprocServer32", has("no path") ? u"" : path);
    set(CLASS + u"\\ProgID", u"Faulty");
    set(u"Faulty\\CLSID", has("same name") ? OTHER_CLASS : CLASS.substr(6));
    if (has("same class"))
        set(u"Twin\\CLSID", CLASS.substr(6));
    return 0;
}

ENTRY_POINT VXUnregisterServer()
{
    for (const char16_t* key : {u"CLSID", u"Twin", has("kept key") ? u"" : u"Faulty"})
        VXRegistryDeleteKey(VX_HKEY_CLASSES_32, key);
    return 0;
}
