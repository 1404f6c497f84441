#pragma once

#include <chrono>
#include <cstdint>

namespace vxtools {

/// Shows on standard error how much of the input is done, only on a terminal and for inputs above 16 MiB.
class Progress {
public:
    /// `size` is that of the input in bytes.
    explicit Progress(std::int64_t size);
    /// Clears the line.
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    void update(std::int64_t done);

private:
    using Clock = std::chrono::steady_clock;

    std::int64_t m_size;
    bool m_isWanted;
    bool m_isShown = false;
    Clock::time_point m_next;
};

} // namespace vxtools
