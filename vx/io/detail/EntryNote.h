#pragma once

#include "vx/ipc/Semaphore.h"
#include "vxsys/File.h"

#include <cstdint>

namespace vx::io::detail {

/// An open file whose writers take turns.
struct GuardedFile {
    ipc::Semaphore& semaphore; ///< held by the caller
    std::uint32_t handle;
    const VXFileIdentity& identity;
    bool appends; ///< every write goes to the end
};

/// Repairs what a killed holder of the semaphore may have left at the end of the file, of which its note tells. A torn entry
/// is cut off if all bytes from its start on are proved to be the killed writer's. Otherwise, for other programs may have
/// written meanwhile, all bytes stay, and the next entry begins on a new line. Cheap where there is no note.
void repairEntry(const GuardedFile& file);

/// Notes what is being written at the end of the file, for the case that this process is killed meanwhile. What was written
/// of an entry that did not get whole is cut off at the end of the block, unless others have written after it.
class [[nodiscard]] EntryNote {
public:
    EntryNote(const GuardedFile& file, std::int64_t start, const signed char* bytes, std::int32_t length);
    ~EntryNote();
    EntryNote(const EntryNote&) = delete;
    EntryNote& operator=(const EntryNote&) = delete;

    /// Counts what one call of the system has written.
    void wrote(std::int32_t count) noexcept;
    /// Whether other bytes came between two parts of the entry.
    bool isSplit() const noexcept { return m_isSplit; }

private:
    bool isUndone() const noexcept;

    const GuardedFile m_file;
    const std::int32_t m_length;
    std::int32_t m_written = 0;
    std::int64_t m_start = 0; ///< where the entry came to stand; known once a part of it is written
    bool m_isSplit = false;
};

} // namespace vx::io::detail
