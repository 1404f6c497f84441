#pragma once

#include "vx/IVXUnknown.h"
#include "vx/vorb/InterfaceData.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <new>

namespace vx::vorb {
class Module;
}

namespace vx {

/// The counted base of all objects. A new object has count 0; the first `AddRef`, normally by a `Reference<T>`, makes it
/// 1, and the `Release` that takes it to 0 destroys it on the thread that calls it. The count is atomic; nothing else here
/// is synchronised. An object on the stack or inside another keeps count 0 and must not be held by a `Reference<T>`.
///
/// Long chains of objects that hold each other are destroyed in a loop. At most 100 destructors of a thread run one inside
/// the other. What the innermost of them releases is destroyed right after it ends, in the order of the releases, and
/// exceptions of those destructors are swallowed.
class VX_API ComObject : public IVXUnknown {
public:
    ComObject() noexcept = default;
    /// Copies the fields, the count and the module included.
    ComObject(const ComObject& other) noexcept;
    ComObject& operator=(const ComObject& other) noexcept;

    // IVXUnknown
    std::int32_t QueryInterface(const _GUID& iid, void** out) override;
    inline std::uint32_t AddRef() const override;
    inline std::uint32_t Release() const override;

    /// Destroying a lock may fail, so a destructor of the tree may throw. Value classes say `noexcept` themselves.
    inline virtual ~ComObject() noexcept(false);

    static void* operator new(std::size_t bytes);
    static void operator delete(void* memory) noexcept;
    /// For derived classes with a larger alignment than `new` gives by itself.
    static void* operator new(std::size_t bytes, std::align_val_t alignment);
    static void operator delete(void* memory, std::align_val_t alignment) noexcept;
    static void* operator new(std::size_t, void* place) noexcept { return place; }
    static void operator delete(void*, void*) noexcept { }

    /// The count at this moment. A caller that holds a reference and sees 1 also sees everything that was written
    /// before the other references were released.
    std::uint32_t GetRefCount() const noexcept { return m_life.refCount.load(std::memory_order_acquire); }

    /// The module that this object keeps loaded while its own count is above 0. Not owned. Set it before the first
    /// `AddRef`.
    void SetComModule(vorb::Module* module) noexcept { m_module = module; }
    vorb::Module* GetComModule() const noexcept { return m_module; }
    /// RESULT_NO_AGGREGATION. A class that can be aggregated hides this operation with its own.
    std::int32_t SetOuterUnknown(IVXUnknown* outer) noexcept;
    std::int32_t NonDelegatingQueryInterface(const _GUID& iid, void** out) { return QueryInterface(iid, out); }

    /// Adds no reference.
    IVXUnknown* GetUnknown() noexcept { return this; }
    const IVXUnknown* GetUnknown() const noexcept { return this; }

    static const vorb::InterfaceData* GetComIntfMap();

    /// Texts for the registration of a creatable class, which hides these operations with its own. Null writes nothing.
    static const char16_t* GetComDescription() noexcept { return nullptr; }
    static const char16_t* GetComObjectVersion() noexcept { return nullptr; }
    static const char16_t* GetComProgID() noexcept { return nullptr; }
    static const char16_t* GetComVersionIndependentProgID() noexcept { return nullptr; }

protected:
    /// These change only the count, and not the module; they never destroy the object. They return the new count.
    std::uint32_t InternalAddRef() const noexcept
    {
        return m_life.refCount.fetch_add(1, std::memory_order_relaxed) + 1;
    }
    std::uint32_t InternalRelease() const noexcept
    {
        return m_life.refCount.fetch_sub(1, std::memory_order_acq_rel) - 1;
    }

    /// As `Release`, without an atomic operation for the only holder. For objects that are only reached by references.
    void releaseHeld() const
    {
        if (GetRefCount() == 1)
            destroy();
        else
            Release();
    }

    /// Sets the first reference to a new object without an atomic operation. Only the creator may know the object.
    void setFirstReference() const noexcept { m_life.refCount.store(1, std::memory_order_relaxed); }

private:
    class Destruction;

    union Life {
        constexpr Life() noexcept
            : refCount(0)
        {
        }

        std::atomic<std::uint32_t> refCount;
        const ComObject* next; ///< of the objects that wait for their destructor
    };

    void lockModule() const noexcept;
    void destroy() const;

    mutable Life m_life;
    vorb::Module* m_module = nullptr;
};

ComObject::~ComObject() noexcept(false) = default;

inline std::uint32_t ComObject::AddRef() const
{
    const std::uint32_t count = InternalAddRef();
    if (count == 1 && m_module != nullptr)
        lockModule();
    return count;
}

inline std::uint32_t ComObject::Release() const
{
    const std::uint32_t count = InternalRelease();
    if (count == 0)
        destroy();
    return count;
}

} // namespace vx
