#pragma once

#include <cerrno>
#include <fcntl.h>
#include <unistd.h>
#include <utility>

namespace vxsys::detail {

/// Owns a descriptor of the system, and closes it in the destructor.
class Descriptor {
public:
    explicit constexpr Descriptor(int descriptor = -1) noexcept
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
    /// Moves an open descriptor to a free number above those of the standard streams. Returns a native error or 0.
    int moveAboveStandardStreams() noexcept;

    /// Returns the descriptor, which the caller now owns.
    int release() noexcept { return std::exchange(m_descriptor, -1); }
    int get() const noexcept { return m_descriptor; }
    bool isOpen() const noexcept { return m_descriptor >= 0; }

private:
    int m_descriptor;
};

inline int Descriptor::moveAboveStandardStreams() noexcept
{
    const int moved = ::fcntl(m_descriptor, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    const int error = moved == -1 ? errno : 0;
    reset(moved);
    return error;
}

} // namespace vxsys::detail
