#include "vxsys/Named.h"

#include "vxsys/detail/Handle.h"
#include "vxsys/detail/StateLock.h"
#include "vxsys/posix/NamedObject.h"

#include <limits>

namespace {

using namespace vxsys::detail;

class NamedSemaphore final : public SemaphoreHandle {
public:
    NamedSemaphore() noexcept
        : SemaphoreHandle(true)
    {
    }
    int init(const char* name, std::uint32_t value) noexcept
    {
        if (name == nullptr || value > std::numeric_limits<std::int32_t>::max())
            return EINVAL;
        const StateGuard guard(g_namedLock);
        return NamedObject::open(name, {.kind = NamedOpening::SEMAPHORE, .value = value}, &m_object);
    }
    int wait(const Deadline& deadline) noexcept override { return m_object->take(deadline); }
    int post() noexcept override { return m_object->post(); }
    int value(std::int32_t& count) noexcept override { return m_object->value(count); }
    int setNote(const VXNamedSemNote& note) noexcept { return m_object->setNote(note); }
    int note(VXNamedSemNote& note) noexcept { return m_object->note(note); }
    int close() noexcept
    {
        const StateGuard guard(g_namedLock);
        return m_object->release();
    }

private:
    NamedObject* m_object = nullptr;
};

template <class Work>
std::int32_t onNamed(VXHandle semaphore, Work&& work) noexcept
{
    return onHandle<SemaphoreHandle>(semaphore,
        [&](SemaphoreHandle& object) { return object.isNamed ? work(static_cast<NamedSemaphore&>(object)) : EINVAL; });
}

} // namespace

std::int32_t VXNamedSemOpen(const char* name, std::uint32_t value, VXHandle* semaphore) noexcept
{
    return createHandle<NamedSemaphore>(semaphore, name, name, value);
}

std::int32_t VXNamedSemClose(VXHandle semaphore) noexcept
{
    return onNamed(semaphore, [](NamedSemaphore& object) {
        const int error = object.close();
        if (error == 0)
            delete &object;
        return error;
    });
}

std::int32_t VXNamedSemSetNote(VXHandle semaphore, const VXNamedSemNote* note) noexcept
{
    if (note == nullptr || note->proofLength > VXNamedSemNote::MOST_PROOF)
        return VXResultFromNative(EINVAL);
    return onNamed(semaphore, [&](NamedSemaphore& object) { return object.setNote(*note); });
}

std::int32_t VXNamedSemGetNote(VXHandle semaphore, VXNamedSemNote* note) noexcept
{
    if (note == nullptr)
        return VXResultFromNative(EINVAL);
    note->length = 0;
    return onNamed(semaphore, [&](NamedSemaphore& object) { return object.note(*note); });
}
