#include "vx/vorb/detail/ClassEntries.h"

#include "vx/Exceptions.h"
#include "vx/Occasion.h"
#include "vx/String.h"
#include "vx/TerminatedText.h"
#include "vxsys/Component.h"
#include "vxsys/Registry.h"

#include <iterator>

namespace vx::vorb::detail {

namespace {

String identifierOf(const _GUID& classId)
{
    char16_t text[39];
    throwIfFailed(VXComStringFromGUID(&classId, text, std::size(text)));
    return text;
}

String classKeyOf(const _GUID& classId)
{
    return u"CLSID\\" + identifierOf(classId);
}

/// In registry paths "/" means a backslash.
String pathOf(String key)
{
    for (int at = key.indexOf(u'/'); at != -1; at = key.indexOf(u'/', at + 1))
        key.setCharAt(at, u'\\');
    return key;
}

/// Sets the default value of a key in the hive of the classes.
void setEntry(const String& key, const String& text)
{
    during(u"set class entry", key, [&] {
        throwIfFailed(VXRegistrySetValue(VX_HKEY_CLASSES_32, SystemName(pathOf(key)), u"", VX_REG_STRING,
            TerminatedText(text).get(), (text.getLength() + 1) * static_cast<std::int32_t>(sizeof(char16_t))));
    });
}

void removeEntry(const String& key)
{
    during(u"remove class entry", key,
        [&] { throwIfFailed(VXRegistryDeleteKey(VX_HKEY_CLASSES_32, SystemName(pathOf(key)))); });
}

} // namespace

void ClassEntries::set(const char16_t* words) const
{
    const String name(progId);
    const String description(words);
    const String identifier = identifierOf(classId);
    const String classKey = classKeyOf(classId);

    if (progId != nullptr) {
        setEntry(name, description);
        setEntry(name + u"\\CLSID", identifier);
    }
    setEntry(classKey, name);
    if (!name.isEmpty())
        setEntry(classKey + u"\\ProgID", name);
    if (const char16_t* const general = generalProgId()) {
        setEntry(general, description);
        setEntry(String(general) + u"\\CLSID", identifier);
        setEntry(String(general) + u"\\CurVer", name);
        setEntry(classKey + u"\\VersionIndependentProgID", general);
    }
}

void ClassEntries::setLibrary(const char16_t* path) const
{
    setEntry(classKeyOf(classId) + u"\\InprocServer32", path);
}

void ClassEntries::remove() const
{
    if (progId != nullptr)
        removeEntry(progId);
    removeEntry(classKeyOf(classId));
    if (const char16_t* const general = generalProgId())
        removeEntry(general);
}

} // namespace vx::vorb::detail
