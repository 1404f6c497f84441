#include "vx/io/detail/EntryNote.h"

#include "vx/Result.h"
#include "vx/io/detail/EntryProof.h"

#include <algorithm>

namespace vx::io::detail {

namespace {

constexpr std::int64_t UNKNOWN = -1;
constexpr int MOST_LOOKS = 16; // at a file that others write to all the time

/// A note that nothing has to be repaired. `lineEnd` is where the last line of the file ends. It is kept as its complement,
/// so that a process that is killed while it begins a note leaves no such place.
void setDone(const GuardedFile& file, std::int64_t lineEnd)
{
    VXNamedSemNote note; // the proof is not used
    note.file = file.identity;
    note.start = ~lineEnd;
    note.length = 0;
    note.proofLength = 0;
    file.semaphore.setNote(note);
}

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

bool endsLine(std::uint32_t reader, std::int64_t size) noexcept
{
    char last = '\0';
    std::int32_t done = 0;
    return !failed(VXFileReadAt(reader, size - 1, &last, 1, &done)) && last == '\n';
}

/// Ends the last line of the file, if the next entry will be written after it. False if that fails.
bool endLine(const GuardedFile& file, std::uint32_t reader, std::int64_t size)
{
    std::int64_t position = 0;
    if (!file.appends && (failed(VXFileGetPosition(file.handle, &position)) || position != size))
        return true;
    if (endsLine(reader, size))
        return true;
    std::int32_t done = 0;
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

bool isLine(const signed char* bytes, std::int32_t length) noexcept
{
    return length > 0 && bytes[length - 1] == '\n' && (length == 1 || bytes[length - 2] != '\0');
}

std::int64_t repairEntry(const GuardedFile& file)
{
    const VXNamedSemNote note = file.semaphore.getNote();
    if (note.file != file.identity)
        return UNKNOWN;
    if (note.length == 0)
        return ~note.start;
    if (isRepaired(file, note))
        setDone(file, UNKNOWN);
    return UNKNOWN;
}

std::int32_t endLastLine(const GuardedFile& file, std::int64_t size)
{
    const Reader reader(file.handle);
    std::int32_t done = 0;
    int looks = 0;
    for (std::int64_t before = UNKNOWN; size != before;) {
        const bool canLook = reader.get() != VX_FILE_INVALID_HANDLE && ++looks <= MOST_LOOKS;
        if (!canLook || size == 0 || endsLine(reader.get(), size))
            return RESULT_OK;
        // A program without the semaphore may be in the middle of its write. Writing nothing waits until it is done, if the
        // file system locks the file for that. Otherwise there may be an empty line.
        before = size;
        VXFileWrite(file.handle, "", 0, &done);
        if (failed(VXFileGetSize(file.handle, &size)))
            return RESULT_OK;
    }
    return VXFileWrite(file.handle, "\n", 1, &done);
}

EntryNote::EntryNote(const GuardedFile& file, std::int64_t start, const signed char* bytes, std::int32_t length)
    : m_file(file)
    , m_length(length)
    , m_lineEnd(isLine(bytes, length) ? start + length : UNKNOWN)
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
        if (m_written == m_length && !m_isSplit)
            setDone(m_file, m_lineEnd);
        else if (isUndone())
            setDone(m_file, UNKNOWN);
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
