#pragma once

#include "vxsys/detail/ObjectName.h"

#include <cstddef>

namespace vxsys::detail {

/// The private folder of the user that named objects have their files in. It lies in memory and goes with the system, as
/// they do. Each user and each namespace of process numbers has its own: only there can one process tell that another has
/// gone.
///
/// While a value stands open nobody else makes or removes a file there. Each operation gives a native error or 0.
class NamedFolder {
public:
    static constexpr std::size_t PATH_SIZE = 64 + ObjectName::SIZE;

    NamedFolder() noexcept = default;
    ~NamedFolder();
    NamedFolder(const NamedFolder&) = delete;
    NamedFolder& operator=(const NamedFolder&) = delete;

    /// Opens the folder, makes it when missing, and waits until nobody else has it. EACCES where it is not the user's alone.
    int open() noexcept;
    int descriptor() const noexcept { return m_descriptor; }

    /// The full path of the file `name` of the user that the process acts for now.
    static void writePath(const char* name, char (&path)[PATH_SIZE]) noexcept;

private:
    int m_descriptor = -1;
};

} // namespace vxsys::detail
