#pragma once

#include "vx/sync/Mutex.h"
#include "vx/vorb/ClassData.h"

#include <atomic>
#include <cstdint>

namespace vx::vorb {

/// A component library as its users see it: it answers requests for class factories and tells whether the library may be
/// unloaded. It is not reference-counted: its count tells how many objects and locks keep the library loaded.
class VX_API Module {
public:
    /// `table` is not owned and outlives the module; null is an empty one.
    explicit Module(ClassData* table);
    Module(const Module&) = delete;
    Module& operator=(const Module&) = delete;
    /// Releases the factories.
    virtual ~Module() noexcept(false);

    /// Both return the new count.
    std::uint32_t AddRef() noexcept { return m_lockCount.fetch_add(1, std::memory_order_relaxed) + 1; }
    std::uint32_t Release() noexcept { return m_lockCount.fetch_sub(1, std::memory_order_acq_rel) - 1; }
    std::uint32_t GetRefCount() const noexcept { return m_lockCount.load(std::memory_order_acquire); }

    /// 0 when nothing keeps the library, otherwise 1.
    virtual std::int32_t CanUnloadNow();
    /// The factory of `classId`, counted for the caller; one serves all requests. RESULT_CLASS_NOT_AVAILABLE and null for
    /// a class in no row.
    virtual std::int32_t GetClassObject(const _GUID& classId, const _GUID& iid, void** out);
    /// Writes the entries of all classes into the registry's hive VX_HKEY_CLASSES_32. `path` is that of the library. The first
    /// negative result ends it and is the answer.
    virtual std::int32_t RegisterServer(const char16_t* path);
    /// Removes them, with all that stands below their keys.
    virtual std::int32_t UnregisterServer();

    /// The same for the library around the address `module`, null for the program. RESULT_FAIL where its path has 260 units or
    /// more.
    std::int32_t RegisterServer(const void* module);
    // Narrow and wide text would be taken for an address.
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

/// The module of a component in a shared library. Its classes' entries name the library too.
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
