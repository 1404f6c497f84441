#include "vx/io/detail/EntryNote.h"

#include "vx/Result.h"
#include "vx/io/detail/EntryProof.h"

#include <algorithm>

namespace vx::io::detail {

namespace {

constexpr VXNamedSemNote NO_NOTE {};

/// Opens the same file for reading, since the handle of a writer need not allow reading.
class Reader {
public:
    explicit Reader(std::uint32_t file) noexcept { VXFileReopen(file, VX_FILE_READ, &m_handle); }
    ~Reader()
    {
        if (m_handle != VX_FILE_INVALID_HANDLE)
            VXFileClose(m_handle);
    }
    Reader(const Reader&) = delete;
    Reader& operator=(const Reader&) = delete;

    std::uint32_t get() const noexcept { return m_handle; }

private:
    std::uint32_t m_handle = VX_FILE_INVALID_HANDLE;
};

/// Truncates the file to `size`. A stream that was at the end is at the end afterwards.
bool cut(const GuardedFile& file, std::int64_t size) noexcept
{
    std::int64_t position = 0;
    if (failed(VXFileTruncate(file.handle, size)))
        return false;
    if (!failed(VXFileGetPosition(file.handle, &position)) && position > size)
        VXFileSeekToEnd(file.handle, &position);
    return true;
}

/// Ends the last line of the file, if the next entry will be written after it. False if that fails.
bool endLine(const GuardedFile& file, std::uint32_t reader, std::int64_t size)
{
    std::int64_t position = 0;
    if (!file.appends && (failed(VXFileGetPosition(file.handle, &position)) || position != size))
        return true;
    char last = '\0';
    std::int32_t done = 0;
    if (!failed(VXFileReadAt(reader, size - 1, &last, 1, &done)) && last == '\n')
        return true;
    return !failed(VXFileWrite(file.handle, "\n", 1, &done)) && done == 1;
}

/// False if the note has to be kept for a later try.
bool isRepaired(const GuardedFile& file, const VXNamedSemNote& note)
{
    const Reader reader(file.handle);
    std::int64_t size = 0;
    if (failed(VXFileGetSize(file.handle, &size)))
        return false;
    if (size <= note.start)
        return true;
    const std::int64_t found = std::min(size - note.start, note.length);
    if (isProved(note, reader.get(), found)) {
        if (found == note.length)
            return true;
        // Others may write after the content was checked, so the size is checked again directly before the file is
        // truncated.
        std::int64_t now = 0;
        if (!failed(VXFileGetSize(file.handle, &now)) && now == size && cut(file, note.start))
            return true;
    }
    return endLine(file, reader.get(), size);
}

} // namespace

void repairEntry(const GuardedFile& file)
{
    const VXNamedSemNote note = file.semaphore.getNote();
    if (note.length != 0 && note.file == file.identity && isRepaired(file, note))
        file.semaphore.setNote(NO_NOTE);
}

EntryNote::EntryNote(const GuardedFile& file, std::int64_t start, const signed char* bytes, std::int32_t length)
    : m_file(file)
    , m_length(length)
{
    VXNamedSemNote note; // only the used part of its proof is filled
    note.file = file.identity;
    note.start = start;
    note.length = length;
    writeProof(note, bytes);
    m_file.semaphore.setNote(note);
}

EntryNote::~EntryNote()
{
    try {
        if ((m_written == m_length && !m_isSplit) || isUndone())
            m_file.semaphore.setNote(NO_NOTE);
    } catch (...) {
        // The note is kept, and the next holder makes the repair.
    }
}

void EntryNote::wrote(std::int32_t count) noexcept
{
    if (count < m_length) { // rare: the disk is nearly full
        std::int64_t end = 0;
        const bool isKnown = !failed(VXFileGetPosition(m_file.handle, &end));
        if (m_written == 0)
            m_start = end - count;
        m_isSplit = m_isSplit || !isKnown || end != m_start + m_written + count;
    }
    m_written += count;
}

/// Whether no part of the entry is left in the file.
bool EntryNote::isUndone() const noexcept
{
    std::int64_t size = 0;
    return m_written == 0
        || (!m_isSplit && !failed(VXFileGetSize(m_file.handle, &size)) && size == m_start + m_written
            && cut(m_file, m_start));
}

} // namespace vx::io::detail
