#pragma once

#include "vxsys/File.h"
#include "vxsys/detail/Descriptor.h"
#include "vxsys/detail/Path.h"

#include <climits>
#include <cstddef>
#include <sys/types.h>

namespace vxsys::detail {

/// The place of a file: its folder, which is open, and its name in it, after all symbolic links.
class FilePlace {
public:
    static constexpr std::size_t NAME_SIZE = NAME_MAX + 1;

    /// Returns a native error or 0. The file need not exist.
    int find(const char* path) noexcept;

    int folder() const noexcept { return m_folder.get(); }
    const char* name() const noexcept { return m_name; }

private:
    int enter(char* path) noexcept;
    int readLink(char (&target)[NATIVE_PATH_SIZE]) const noexcept;

    Descriptor m_folder;
    char m_name[NAME_SIZE] = "";
};

/// The new content of a file. It is written to a separate file and flushed, and then takes the place of the old file in
/// one step. So the file has either the whole old content or the whole new one at any time. It keeps its owner, its
/// mode and its access list. Other hard links keep the old content.
///
/// If the file system supports it, the content has no name until `commit`, so that a kill leaves nothing. A new file
/// gets its name in one step. A replacement needs a temporary name between two system calls; only SIGKILL can end a
/// process of one thread there. On other file systems it has a temporary name from the start.
///
/// Each operation returns a native error or 0.
class FileReplacement {
public:
    FileReplacement() noexcept = default;
    ~FileReplacement() { discard(); }
    FileReplacement(const FileReplacement&) = delete;
    FileReplacement& operator=(const FileReplacement&) = delete;

    /// EACCES if the file may not be written, if the user may not create files in its folder, and if it is not a
    /// regular file. A new file gets `mode`, reduced by the process's mask.
    int begin(const char* path, mode_t mode) noexcept;
    int write(const void* content, std::size_t length) const noexcept;
    /// May be called once. After a failure the file has its old content, unless only the flush of its folder failed. If
    /// `status` is not null, `*status` becomes that of the new file.
    int commit(VXFileStatus* status) noexcept;
    /// Removes the temporary name of what was not committed. Safe in a signal handler. In a child process by `fork` it
    /// removes nothing.
    void discard() noexcept;

    int descriptor() const noexcept { return m_file.get(); }

private:
    int openOld() noexcept;
    int openNew(mode_t mode) noexcept;
    int takeRights() const noexcept;
    int takePlace() noexcept;
    int replaceOld() noexcept;

    FilePlace m_place;
    Descriptor m_old;
    Descriptor m_file;
    pid_t m_process = 0; ///< the process that made it
    char m_name[FilePlace::NAME_SIZE] = ""; ///< empty if it has none
};

} // namespace vxsys::detail
