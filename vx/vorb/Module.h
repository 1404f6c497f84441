#pragma once

#include "vx/sync/Mutex.h"
#include "vx/vorb/ClassData.h"

#include <atomic>
#include <cstdint>

namespace vx::vorb {

/// A component library as its users see it: it answers requests for class factories and tells whether the library may
/// be unloaded. It is not reference-counted: its count is the number of objects and locks that keep the library loaded.
class VX_API Module {
public:
    /// `table` is not owned and must outlive the module; null is an empty one.
    explicit Module(ClassData* table);
    Module(const Module&) = delete;
    Module& operator=(const Module&) = delete;
    /// Releases the factories.
    virtual ~Module() noexcept(false);

    /// Both return the new count.
    std::uint32_t AddRef() noexcept { return m_lockCount.fetch_add(1, std::memory_order_relaxed) + 1; }
    std::uint32_t Release() noexcept { return m_lockCount.fetch_sub(1, std::memory_order_acq_rel) - 1; }
    std::uint32_t GetRefCount() const noexcept { return m_lockCount.load(std::memory_order_acquire); }

    /// 0 if nothing keeps the library loaded, otherwise 1.
    virtual std::int32_t CanUnloadNow();
    /// The factory of `classId`, with a reference for the caller; all requests get the same one.
    /// RESULT_CLASS_NOT_AVAILABLE and null for a class that is in no row.
    virtual std::int32_t GetClassObject(const _GUID& classId, const _GUID& iid, void** out);
    /// Writes the entries of all classes into the registry's hive VX_HKEY_CLASSES_32. `path` is that of the library.
    /// Stops at the first negative result and returns it.
    virtual std::int32_t RegisterServer(const char16_t* path);
    /// Removes these entries with all subkeys.
    virtual std::int32_t UnregisterServer();

    /// The same for the library that contains the address `module`; null is the program. RESULT_FAIL if its path has
    /// 260 units or more.
    std::int32_t RegisterServer(const void* module);
    // Narrow and wide text would convert to an address.
    std::int32_t RegisterServer(const char*) = delete;
    std::int32_t RegisterServer(const char8_t*) = delete;
    std::int32_t RegisterServer(const wchar_t*) = delete;

protected:
    /// The steps of the operations above for one row.
    virtual std::int32_t RegisterClassEntry(ClassData& row, const char16_t* path);
    virtual std::int32_t UnregisterClassEntry(ClassData& row);
    virtual std::int32_t TryGetClassObject(const _GUID& classId, const _GUID& iid, void** out, ClassData& row);

private:
    ClassData* m_table;
    std::atomic<std::uint32_t> m_lockCount {0};
    sync::Mutex m_lock;
};

/// The module of a component in a shared library. The entries of its classes also name the library.
class VX_API DllModule : public Module {
public:
    /// As for Module.
    explicit DllModule(ClassData* table);
    ~DllModule() noexcept(false) override;

protected:
    // Module
    std::int32_t RegisterClassEntry(ClassData& row, const char16_t* path) override;
};

} // namespace vx::vorb
