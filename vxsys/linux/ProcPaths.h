#pragma once

#include <cstdio>

namespace vxsys::detail {

/// The file of the running program (proc(5)).
inline constexpr const char* PROGRAM_PATH = "/proc/self/exe";

/// A path to the file of an open descriptor of this process, even if the file has no name or another one.
class DescriptorPath {
public:
    explicit DescriptorPath(int descriptor) noexcept
    {
        std::snprintf(m_path, sizeof m_path, "/proc/self/fd/%d", descriptor);
    }

    const char* get() const noexcept { return m_path; }

private:
    char m_path[32];
};

} // namespace vxsys::detail
