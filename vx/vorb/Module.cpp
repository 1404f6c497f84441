#include "vx/vorb/Module.h"

#include "vx/Exceptions.h"
#include "vx/Occasion.h"
#include "vx/Result.h"
#include "vx/String.h"
#include "vx/TerminatedText.h"
#include "vx/sync/ScopedLock.h"
#include "vx/vorb/Boundary.h"
#include "vxsys/Component.h"
#include "vxsys/Module.h"
#include "vxsys/Registry.h"

#include <concepts>
#include <iterator>

namespace vx::vorb {

namespace {

/// Calls `call` for each row until a result is `enough`, and returns the last result; `none` for an empty table.
template <std::predicate<std::int32_t> Enough, class Call>
std::int32_t callRows(ClassData* table, std::int32_t none, Enough enough, Call call)
{
    std::int32_t result = none;
    for (ClassData* row = table; row != nullptr && row->classId != nullptr; ++row) {
        result = call(*row);
        if (enough(result))
            break;
    }
    return result;
}

bool succeeded(std::int32_t result) noexcept
{
    return !failed(result);
}

constexpr const char16_t* CLASSES_KEY = u"CLSID\\";

/// Null if the class has none.
const char16_t* textOf(TextFunction function)
{
    return function != nullptr ? function() : nullptr;
}

String identifierOf(const ClassData& row)
{
    char16_t text[39];
    throwIfFailed(VXComStringFromGUID(row.classId, text, std::size(text)));
    return text;
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

Module::Module(ClassData* table)
    : m_table(table)
    , m_lock("vx::vorb::Module::m_lock")
{
}

Module::~Module() noexcept(false)
{
    for (ClassData* row = m_table; row != nullptr && row->classId != nullptr; ++row) {
        if (row->factory != nullptr)
            row->factory->Release();
        row->factory = nullptr;
    }
}

std::int32_t Module::CanUnloadNow()
{
    return GetRefCount() == 0 ? RESULT_OK : RESULT_FALSE;
}

std::int32_t Module::GetClassObject(const _GUID& classId, const _GUID& iid, void** out)
{
    if (out == nullptr)
        return RESULT_POINTER;
    *out = nullptr;
    return callRows(m_table, RESULT_CLASS_NOT_AVAILABLE, succeeded,
        [&](ClassData& row) { return TryGetClassObject(classId, iid, out, row); });
}

std::int32_t Module::RegisterServer(const char16_t* path)
{
    return callRows(m_table, RESULT_OK, failed, [&](ClassData& row) { return RegisterClassEntry(row, path); });
}

std::int32_t Module::UnregisterServer()
{
    return callRows(m_table, RESULT_OK, failed, [&](ClassData& row) { return UnregisterClassEntry(row); });
}

std::int32_t Module::RegisterServer(const void* module)
{
    constexpr std::int32_t LONGEST_PATH = 260; // with the terminator

    char16_t path[LONGEST_PATH];
    if (failed(VXModuleGetFileName(module, path, LONGEST_PATH)))
        return RESULT_FAIL;
    return RegisterServer(path);
}

std::int32_t Module::RegisterClassEntry(ClassData& row, const char16_t*)
{
    return atBoundary([&] {
        const char16_t* const name = textOf(row.progId);
        const String progId(name);
        const String description(textOf(row.description));
        const String classId = identifierOf(row);
        const String classKey = CLASSES_KEY + classId;

        if (name != nullptr) {
            setEntry(progId, description);
            setEntry(progId + u"\\CLSID", classId);
        }
        setEntry(classKey, progId);
        if (!progId.isEmpty())
            setEntry(classKey + u"\\ProgID", progId);
        if (const char16_t* const general = textOf(row.versionIndependentProgId)) {
            setEntry(general, description);
            setEntry(String(general) + u"\\CLSID", classId);
            setEntry(String(general) + u"\\CurVer", progId);
            setEntry(classKey + u"\\VersionIndependentProgID", general);
        }
    });
}

std::int32_t Module::UnregisterClassEntry(ClassData& row)
{
    return atBoundary([&] {
        if (const char16_t* const progId = textOf(row.progId))
            removeEntry(progId);
        removeEntry(CLASSES_KEY + identifierOf(row));
        if (const char16_t* const general = textOf(row.versionIndependentProgId))
            removeEntry(general);
    });
}

std::int32_t Module::TryGetClassObject(const _GUID& classId, const _GUID& iid, void** out, ClassData& row)
{
    if (!(classId == *row.classId))
        return RESULT_CLASS_NOT_AVAILABLE;

    // Read without the lock first: once set, a factory stays until the module is destroyed.
    std::atomic_ref<IVXUnknown*> factory(row.factory);
    if (factory.load(std::memory_order_acquire) == nullptr) {
        const std::int32_t result = resultAtBoundary([&] {
            const sync::ScopedLock guard(m_lock);
            if (factory.load(std::memory_order_relaxed) != nullptr)
                return RESULT_OK;
            if (row.factoryCreator == nullptr)
                return RESULT_CLASS_NOT_AVAILABLE;
            void* created = nullptr;
            const std::int32_t code = row.factoryCreator(this, row.instanceCreator, IVXUnknown::IID, &created);
            factory.store(static_cast<IVXUnknown*>(created), std::memory_order_release);
            return code;
        });
        if (factory.load(std::memory_order_acquire) == nullptr)
            return result;
    }
    return factory.load(std::memory_order_acquire)->QueryInterface(iid, out);
}

DllModule::DllModule(ClassData* table)
    : Module(table)
{
}

DllModule::~DllModule() noexcept(false) = default;

std::int32_t DllModule::RegisterClassEntry(ClassData& row, const char16_t* path)
{
    return atBoundary([&] {
        throwIfFailed(Module::RegisterClassEntry(row, path));
        setEntry(CLASSES_KEY + identifierOf(row) + u"\\InprocServer32", path);
    });
}

} // namespace vx::vorb
