#include "vx/ipc/Semaphore.h"

#include "vx/Exception.h"
#include "vx/Occasion.h"
#include "vx/Result.h"
#include "vx/String.h"
#include "vx/detail/ReleaseReport.h"

namespace vx::ipc {

namespace {

/// Tells the user what to do so that named objects can be created.
struct Advice {
    std::int32_t result;
    const char16_t* text;
};

constexpr Advice ADVICE[] = {
    {RESULT_NOT_FOUND, u"is missing; mount a tmpfs there"},
    {code(0x80070013), u"is read-only; mount it for writing"},
    {RESULT_DISK_FULL, u"is full; free space in it or make it larger"},
    {code(0x800700DF), u"needs files of more than this process's limit (ulimit -f); raise the limit"},
};

String adviceFor(std::int32_t result)
{
    for (const Advice& row : ADVICE) {
        if (row.result == result)
            return String(u"the memory file system ") + VX_NAMED_OBJECTS_PLACE + u" " + row.text;
    }
    return String();
}

} // namespace

Semaphore::Semaphore(const char* name, std::uint32_t value)
{
    const std::int32_t result = VXNamedSemOpen(name, value, &m_handle);
    if (failed(result))
        throwDuring(u"open semaphore", name, ResultException(result, adviceFor(result)));
}

Semaphore::~Semaphore() noexcept(false)
{
    vx::detail::ReleaseReport::ofDestructor().report(VXNamedSemClose(m_handle));
}

void Semaphore::setNote(const VXNamedSemNote& note)
{
    throwIfFailed(VXNamedSemSetNote(m_handle, &note));
}

VXNamedSemNote Semaphore::getNote()
{
    VXNamedSemNote note; // written completely only if there is a note
    throwIfFailed(VXNamedSemGetNote(m_handle, &note));
    return note;
}

} // namespace vx::ipc
