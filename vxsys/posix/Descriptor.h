#pragma once

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

} // namespace vxsys::detail
