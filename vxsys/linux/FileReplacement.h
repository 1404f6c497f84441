#pragma once

#include "vxsys/File.h"
#include "vxsys/detail/Descriptor.h"

#include <climits>
#include <cstddef>
#include <sys/types.h>

namespace vxsys::detail {

/// Where a file stands: its folder, open, and its name in it, after all symbolic links.
class FilePlace {
public:
    static constexpr std::size_t NAME_SIZE = NAME_MAX + 1;

    /// Returns a native error, 0 for none. Nothing needs to have the name.
    int find(const char* path) noexcept;

    int folder() const noexcept { return m_folder.get(); }
    const char* name() const noexcept { return m_name; }

private:
    int enter(char* path) noexcept;

    Descriptor m_folder;
    char m_name[NAME_SIZE] = "";
};

/// The new content of a file: written beside it, flushed, and then put in its place in one step, so that the file has the
/// old content or the new one at any time, whole. The file keeps its owner, its mode and its access list. Other hard links
/// keep the old content.
///
/// The content has no name until `commit`, where the file system can do so: a kill leaves nothing of it. A file that is new
/// gets its name in one step. One that replaces another needs a name for the moment between two calls of the system, in which
/// only SIGKILL can end a process of one thread. On other file systems it has a temporary name from the start.
///
/// Each operation returns a native error, 0 for none.
class FileReplacement {
public:
    FileReplacement() noexcept = default;
    ~FileReplacement() { discard(); }
    FileReplacement(const FileReplacement&) = delete;
    FileReplacement& operator=(const FileReplacement&) = delete;

    /// EACCES where the file could not be written in place, where the user may not make files in its folder, and for what is no
    /// regular file. A file that is new gets `mode` less the process's mask.
    int begin(const char* path, mode_t mode) noexcept;
    int write(const void* content, std::size_t length) const noexcept;
    /// Once. After a failure the file has its old content, except when only its folder could not be flushed. `*status`,
    /// unless null, is that of the new file.
    int commit(VXFileStatus* status) noexcept;
    /// Removes the name of what was not committed. Safe in a handler of signals. A child process by `fork` removes nothing.
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
    pid_t m_process = 0; ///< that made it
    char m_name[FilePlace::NAME_SIZE] = ""; ///< empty while it has none
};

} // namespace vxsys::detail
