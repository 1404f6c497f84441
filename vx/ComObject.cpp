#include "vx/ComObject.h"

#include "vx/Result.h"
#include "vx/vorb/Module.h"
#include "vxsys/Memory.h"

#include <new>
#include <utility>

namespace vx {

namespace {

struct State {
    int depth = 0; ///< of the destructors that run
    const ComObject* waiting = nullptr; ///< the first of the objects to destroy next
    const ComObject** place = nullptr; ///< the link at which another one is put in
};

/// This model of thread-local storage avoids a function call.
[[gnu::tls_model("initial-exec")]] constinit thread_local State t_state {};

} // namespace

/// The destructors of counted objects that run on this thread, one inside the other. A thread has objects that wait only
/// while such destructors run, so nothing is left to do when it ends.
class ComObject::Destruction {
public:
    static bool isTooDeep() noexcept { return t_state.depth == DEEPEST; }

    /// Destroys `object`, and then the objects that were deferred meanwhile.
    static void run(const ComObject* object)
    {
        const Destruction level;
        destroyNow(object);
    }

    /// Destroys `object` once the destructor that runs now has ended, after what that one deferred before.
    static void defer(const ComObject* object) noexcept
    {
        object->m_life.next = std::exchange(*t_state.place, object);
        t_state.place = &object->m_life.next;
    }

private:
    static constexpr int DEEPEST = 100;

    Destruction() noexcept
    {
        if (++t_state.depth == DEEPEST)
            t_state.place = &t_state.waiting;
    }
    ~Destruction()
    {
        if (t_state.depth == DEEPEST)
            destroyWaiting();
        --t_state.depth;
    }

    static void destroyNow(const ComObject* object)
    {
        if (object->m_module != nullptr)
            object->m_module->Release();
        // If the destructor makes a `Reference` to `this`, the count is 2 for a moment, and nothing is destroyed twice.
        new (&object->m_life.refCount) std::atomic<std::uint32_t>(1);
        delete object;
    }

    static void destroyWaiting() noexcept
    {
        while (const ComObject* object = t_state.waiting) {
            t_state.waiting = object->m_life.next;
            t_state.place = &t_state.waiting; // what this one defers comes before the others that wait
            try {
                destroyNow(object);
            } catch (...) { // the release that led here has returned
            }
        }
    }
};

ComObject::ComObject(const ComObject& other) noexcept
    : IVXUnknown()
    , m_module(other.m_module)
{
    m_life.refCount.store(other.GetRefCount(), std::memory_order_relaxed);
}

ComObject& ComObject::operator=(const ComObject& other) noexcept
{
    m_life.refCount.store(other.GetRefCount(), std::memory_order_relaxed);
    m_module = other.m_module;
    return *this;
}

void* ComObject::operator new(std::size_t bytes)
{
    return vxsys::allocate(bytes);
}

void ComObject::operator delete(void* memory) noexcept
{
    vxsys::deallocate(memory);
}

void* ComObject::operator new(std::size_t bytes, std::align_val_t alignment)
{
    return vxsys::allocate(bytes, alignment);
}

void ComObject::operator delete(void* memory, std::align_val_t) noexcept
{
    vxsys::deallocate(memory);
}

std::int32_t ComObject::QueryInterface(const _GUID& iid, void** out)
{
    return vorb::QueryInterfaceMap(GetComIntfMap(), this, iid, out);
}

void ComObject::lockModule() const noexcept
{
    m_module->AddRef();
}

void ComObject::destroy() const
{
    if (Destruction::isTooDeep())
        Destruction::defer(this);
    else
        Destruction::run(this);
}

std::int32_t ComObject::SetOuterUnknown(IVXUnknown*) noexcept
{
    return RESULT_NO_AGGREGATION;
}

const vorb::InterfaceData* ComObject::GetComIntfMap()
{
    static const vorb::InterfaceData map[] = {vorb::viewRow<ComObject, IVXUnknown>(), vorb::endRow()};
    return map;
}

} // namespace vx
