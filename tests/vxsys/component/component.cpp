// A component library that does not use the library. The first number of a class identifier selects what the class does
// wrong.
#include "vxsys/Component.h"
#include "vxsys/Result.h"

#include <atomic>
#include <new>
#include <pthread.h>

using namespace vxsys::results;

namespace {

std::atomic<int> g_objects {0};

struct Factory final {
    explicit Factory(std::uint32_t behaviour)
        : m_behaviour(behaviour)
    {
        ++g_objects;
    }
    virtual std::int32_t QueryInterface(const _GUID*, void**) { return RESULT_NO_INTERFACE; }
    virtual std::uint32_t AddRef() { return 0; }
    virtual std::uint32_t Release()
    {
        delete this;
        return static_cast<std::uint32_t>(--g_objects);
    }
    virtual std::int32_t CreateInstance(void*, const _GUID*, void** out)
    {
        if (m_behaviour == 9)
            ::pthread_exit(reinterpret_cast<void*>(9));
        if (m_behaviour == 5)
            throw 7;
        if (m_behaviour == 6)
            return RESULT_OK;
        *out = m_behaviour == 7 ? out : static_cast<void*>(new Factory(1));
        return m_behaviour == 7 ? RESULT_NO_INTERFACE : RESULT_OK; // no object, but a pointer
    }
    virtual std::int32_t LockServer(std::int16_t) { return RESULT_OK; }

private:
    const std::uint32_t m_behaviour;
};

} // namespace

#ifndef WITHOUT_CLASSES
extern "C" __attribute__((visibility("default"))) std::int32_t VXGetClassObject(
    const _GUID* classId, const _GUID* iid, void** factory)
{
    if (iid->Data1 != 1)
        return RESULT_NO_INTERFACE;
    switch (classId->Data1) {
    case 2:
        *factory = factory;
        return RESULT_END_OF_FILE;
    case 3:
        return RESULT_OK;
    case 8:
        ::pthread_exit(reinterpret_cast<void*>(8));
    case 4:
        throw std::bad_alloc();
    default:
        *factory = new Factory(classId->Data1);
        return RESULT_OK;
    }
}
#endif

extern "C" __attribute__((visibility("default"))) std::int32_t VXCanUnloadNow()
{
    return g_objects == 0 ? RESULT_OK : RESULT_FALSE;
}
