#pragma once

#include "vxsys/detail/Descriptor.h"
#include "vxsys/detail/Retry.h"

#include <cerrno>
#include <dirent.h>
#include <fcntl.h>
#include <string_view>

namespace vxsys::detail {

/// Reads the entries of an open folder. It opens the folder again, because reading changes the position of a
/// descriptor.
class FolderEntries {
public:
    /// If it cannot be opened, `errno` has the reason.
    explicit FolderEntries(int folder) noexcept;
    ~FolderEntries()
    {
        if (m_entries != nullptr)
            ::closedir(m_entries);
    }
    FolderEntries(const FolderEntries&) = delete;
    FolderEntries& operator=(const FolderEntries&) = delete;

    bool isOpen() const noexcept { return m_entries != nullptr; }

    /// The next name other than "." and "..". Null after the last one, with `errno` 0, and after a failure.
    const char* next() noexcept;

    long position() const noexcept { return ::telldir(m_entries); }
    void setPosition(long position) noexcept { ::seekdir(m_entries, position); }

private:
    DIR* m_entries = nullptr;
};

inline FolderEntries::FolderEntries(int folder) noexcept
{
    Descriptor copy(retryOnSignal([&] { return ::openat(folder, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC); }));
    m_entries = copy.isOpen() ? ::fdopendir(copy.get()) : nullptr;
    if (m_entries != nullptr)
        copy.release();
}

inline const char* FolderEntries::next() noexcept
{
    for (;;) {
        errno = 0;
        const dirent* const entry = ::readdir(m_entries);
        if (entry == nullptr)
            return nullptr;
        const std::string_view name = entry->d_name;
        if (name != "." && name != "..")
            return entry->d_name;
    }
}

} // namespace vxsys::detail
