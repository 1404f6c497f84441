#pragma once

#include "vx/ipc/Semaphore.h"
#include "vxsys/File.h"

#include <cstdint>

namespace vx::io::detail {

/// An open file whose writers are serialised by a semaphore.
struct GuardedFile {
    ipc::Semaphore& semaphore; ///< held by the caller
    std::uint32_t handle;
    const VXFileIdentity& identity;
    bool appends; ///< every write appends
};

/// Whether the bytes end with a line feed of one byte. It has more in UTF-16 and UTF-32, where other characters may end
/// with this byte.
bool isLine(const signed char* bytes, std::int32_t length) noexcept;

/// Repairs the end of the file after a holder of the semaphore was killed, by the note that the holder left. An
/// incomplete entry is removed if all bytes from its start on are proved to be the killed writer's. Otherwise other
/// programs may have written meanwhile: all bytes are kept, and the next entry begins on a new line. Cheap if there is
/// no note. Returns the size of the file after the last line that a holder wrote; negative if the last write was no line.
std::int64_t repairEntry(const GuardedFile& file);

/// Appends a line feed if the file has bytes, and does not end with one. `size` is that of the file. Returns the result of
/// the write. A file that cannot be opened for reading is left as it is.
std::int32_t endLastLine(const GuardedFile& file, std::int64_t size);

/// Keeps a note on what is being written at the end of the file, in case this process is killed meanwhile. The
/// destructor removes an incomplete entry from the file, unless others have written after it.
class [[nodiscard]] EntryNote {
public:
    EntryNote(const GuardedFile& file, std::int64_t start, const signed char* bytes, std::int32_t length);
    ~EntryNote();
    EntryNote(const EntryNote&) = delete;
    EntryNote& operator=(const EntryNote&) = delete;

    /// Adds the bytes that one system call has written.
    void wrote(std::int32_t count) noexcept;
    /// Whether other bytes came between two parts of the entry.
    bool isSplit() const noexcept { return m_isSplit; }

private:
    bool isUndone() const noexcept;

    const GuardedFile m_file;
    const std::int32_t m_length;
    const std::int64_t m_lineEnd; ///< where the file ends with the entry; negative if the entry is no line
    std::int32_t m_written = 0;
    std::int64_t m_start = 0; ///< the position of the entry; known after its first part is written
    bool m_isSplit = false;
};

} // namespace vx::io::detail
