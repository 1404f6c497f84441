#pragma once

#include "vx/ipc/Semaphore.h"
#include "vxsys/File.h"

#include <cstdint>

namespace vx::io::detail {

/// An open file that its writers take turns at.
struct GuardedFile {
    ipc::Semaphore& semaphore; ///< held
    std::uint32_t handle;
    const VXFileIdentity& identity;
};

/// Cuts a torn entry off the file, where the note of a holder that died tells of one and the end of the file shows it. A
/// file that cannot be cut stays as it is.
void repairEntry(const GuardedFile& file);

/// Notes, for whoever holds the semaphore next if this process dies over it, what is being written at the end of the file.
/// An entry that is not `done` at the end of the block is cut off.
class [[nodiscard]] EntryNote {
public:
    EntryNote(const GuardedFile& file, std::int64_t start, std::int32_t length);
    ~EntryNote();
    EntryNote(const EntryNote&) = delete;
    EntryNote& operator=(const EntryNote&) = delete;

    void done() { m_isDone = true; }

private:
    const GuardedFile m_file;
    bool m_isDone = false;
};

} // namespace vx::io::detail
