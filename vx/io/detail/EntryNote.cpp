#include "vx/io/detail/EntryNote.h"

#include "vx/Result.h"

namespace vx::io::detail {

namespace {

bool isTorn(const GuardedFile& file, const VXNamedSemNote& note)
{
    std::int64_t size = 0;
    return !failed(VXFileGetSize(file.handle, &size)) && size > note.start && size - note.start < note.length;
}

} // namespace

void repairEntry(const GuardedFile& file)
{
    const VXNamedSemNote note = file.semaphore.getNote();
    if (note.length == 0 || note.file != file.identity)
        return;
    std::int64_t position = 0;
    if (isTorn(file, note) && !failed(VXFileTruncate(file.handle, note.start))
        && !failed(VXFileGetPosition(file.handle, &position)) && position > note.start) // stood at what was the end
        VXFileSeekToEnd(file.handle, &position);
    file.semaphore.setNote({});
}

EntryNote::EntryNote(const GuardedFile& file, std::int64_t start, std::int32_t length)
    : m_file(file)
{
    m_file.semaphore.setNote({file.identity, start, length});
}

EntryNote::~EntryNote()
{
    try {
        if (!m_isDone)
            repairEntry(m_file);
        m_file.semaphore.setNote({});
    } catch (...) {
        // The note stays, and so does what it says.
    }
}

} // namespace vx::io::detail
