#pragma once

#include <cstdio>
#include <unistd.h>
#include <utility>

namespace vxsys::detail {

/// Closes a descriptor of the system at the end of its life.
class Descriptor {
public:
    explicit Descriptor(int descriptor = -1) noexcept
        : m_descriptor(descriptor)
    {
    }
    ~Descriptor() { reset(-1); }
    Descriptor(Descriptor&& other) noexcept
        : m_descriptor(other.release())
    {
    }
    Descriptor& operator=(Descriptor&& other) noexcept
    {
        reset(other.release());
        return *this;
    }

    void reset(int descriptor) noexcept
    {
        if (isOpen())
            ::close(m_descriptor);
        m_descriptor = descriptor;
    }
    /// The caller closes it.
    int release() noexcept { return std::exchange(m_descriptor, -1); }
    int get() const noexcept { return m_descriptor; }
    bool isOpen() const noexcept { return m_descriptor >= 0; }

private:
    int m_descriptor;
};

/// A path that leads to the file of a descriptor of this process, whatever name the file has, or none.
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
