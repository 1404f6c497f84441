#pragma once

#include "vxsys/ThreadAnnotations.h"
#include "vxsys/detail/ObjectName.h"
#include "vxsys/detail/StateLock.h"

#include <cstddef>

namespace vxsys::detail {

/// Guards what the process stores about named objects. Held during a fork.
inline constinit StateLock g_namedLock;

/// The private folder of a user for the files of named objects. It lies in memory, so that it ends with the system, as the
/// objects do. Each user and each namespace of process numbers has its own: only in one namespace can a process see that
/// another one has ended.
///
/// All users may make folders in "/dev/shm". So a folder counts only if it belongs to the user and only its owner has rights on
/// it, whatever its name: another user can take one name, but cannot keep the user from a second one. All processes of a user
/// find the same folder, for it does not depend on their environment or on who is logged in: the run-time folder of a login is
/// not used, because the system removes it at the end of the login, and processes may run longer.
///
/// While a value is open no other process makes or removes a file in the folder. Each operation returns a native error or 0.
class NamedFolder {
public:
    static constexpr const char* MEMORY = "/dev/shm";
    static constexpr std::size_t PATH_SIZE = 96 + ObjectName::SIZE;

    NamedFolder() noexcept = default;
    ~NamedFolder() { close(); }
    NamedFolder(const NamedFolder&) = delete;
    NamedFolder& operator=(const NamedFolder&) = delete;

    /// Opens the folder, makes it when missing, and waits until no other process has it open.
    int open() noexcept VX_REQUIRES(g_namedLock);
    int descriptor() const noexcept { return m_descriptor; }

    /// The full path of a file in the open folder.
    void writePath(const char* name, char (&path)[PATH_SIZE]) const noexcept VX_REQUIRES(g_namedLock);

    /// The next `open` searches for the folder again, because the user or the namespace may have changed.
    static void forget() noexcept VX_REQUIRES(g_namedLock);

private:
    bool enter(const char* name) noexcept;
    void close() noexcept;

    int m_descriptor = -1;
};

} // namespace vxsys::detail
