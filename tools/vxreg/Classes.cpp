#include "vxreg/Classes.h"

#include "vxreg/TextForm.h"

#include <vx/Exception.h>
#include <vx/util/RegKeyIterator.h>

#include <filesystem>
#include <system_error>

namespace vxreg {

using vx::String;
using vx::util::RegistryKey;

namespace {

std::vector<std::string> subkeysOf(const std::string& key)
{
    std::vector<std::string> names;
    try {
        const auto subkeys = RegistryKey(VX_HKEY_CLASSES_32, fromUtf8(key)).getSubkeyIterator();
        while (subkeys->hasNext())
            names.push_back(subkeys->next()->getKeyName().toUtf8());
    } catch (const vx::Exception&) { // there is no such key
    }
    return names;
}

} // namespace

bool isSameFile(const std::string& path, const std::string& other)
{
    std::error_code ignored;
    return path == other || std::filesystem::equivalent(path, other, ignored);
}

std::string textOfClassKey(const std::string& key)
{
    try {
        return RegistryKey(VX_HKEY_CLASSES_32, fromUtf8(key)).getValueString(String()).toUtf8();
    } catch (const vx::Exception&) {
        return "";
    }
}

Classes readClasses()
{
    Classes classes;
    for (const std::string& id : subkeysOf("CLSID")) {
        const std::string key = "CLSID\\" + id;
        classes.libraryOf[id] = textOfClassKey(key + "\\InprocServer32");
        for (const char* kind : {"\\ProgID", "\\VersionIndependentProgID"}) {
            if (const std::string name = textOfClassKey(key + kind); !name.empty())
                classes.namesOf[id].push_back(name);
        }
    }
    for (const std::string& name : subkeysOf("")) {
        if (name != "CLSID")
            classes.classOf[name] = textOfClassKey(name + "\\CLSID");
    }
    return classes;
}

} // namespace vxreg
