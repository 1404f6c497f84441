#include "vx/vorb/Module.h"

#include "vx/Exceptions.h"
#include "vx/Result.h"
#include "vx/sync/ScopedLock.h"
#include "vx/vorb/Boundary.h"
#include "vx/vorb/detail/ClassEntries.h"
#include "vxsys/Module.h"

#include <concepts>

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

/// Null if the class has none.
const char16_t* textOf(TextFunction function)
{
    return function != nullptr ? function() : nullptr;
}

detail::ClassEntries entriesOf(const ClassData& row)
{
    return {*row.classId, textOf(row.progId), [general = row.versionIndependentProgId] { return textOf(general); }};
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
    return atBoundary([&] { entriesOf(row).set(textOf(row.description)); });
}

std::int32_t Module::UnregisterClassEntry(ClassData& row)
{
    return atBoundary([&] { entriesOf(row).remove(); });
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
        detail::ClassEntries {*row.classId, nullptr, nullptr}.setLibrary(path);
    });
}

} // namespace vx::vorb
