#pragma once

#include <atomic>
#include <cstdint>
#include <sys/eventfd.h>
#include <system_error>
#include <unistd.h>

namespace vxlog {

/// Wakes a thread that waits in `poll`. Setting it again before the thread has noticed costs no system call.
class Wake {
public:
    Wake()
        : m_descriptor(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK))
    {
        if (m_descriptor < 0)
            throw std::system_error(errno, std::generic_category(), "a descriptor for events");
    }
    ~Wake() { ::close(m_descriptor); }
    Wake(const Wake&) = delete;
    Wake& operator=(const Wake&) = delete;

    int descriptor() const noexcept { return m_descriptor; }
    void set() noexcept
    {
        constexpr std::uint64_t ONE = 1;
        if (!m_isSet.exchange(true))
            static_cast<void>(!::write(m_descriptor, &ONE, sizeof ONE));
    }
    /// Call this before looking for what was announced.
    void clear() noexcept
    {
        std::uint64_t count;
        static_cast<void>(!::read(m_descriptor, &count, sizeof count));
        m_isSet = false;
    }

private:
    int m_descriptor;
    std::atomic<bool> m_isSet {false};
};

} // namespace vxlog
