#pragma once

#include <atomic>
#include <cstddef>
#include <mutex>

namespace vxlogd {

/// Counts the lines that wait for the log. While they need too much memory, no client is read.
class Backlog {
public:
    void setLimit(std::size_t bytes);
    void add(std::size_t bytes);
    /// Removes `lines` lines with that many bytes in all. True if clients may be read again.
    bool remove(std::size_t lines, std::size_t bytes);

    /// From the moment when the limit is reached until half of it is free.
    bool isFull() const { return m_isFull; }

    /// So few lines that they are in the log within some milliseconds.
    bool isShort() const { return m_isShort; }

    struct Size {
        std::size_t lines;
        std::size_t bytes;
    };
    Size getSize() const;

private:
    mutable std::mutex m_lock;
    Size m_size {};
    std::size_t m_limit = 0;
    std::atomic<bool> m_isFull = false;
    std::atomic<bool> m_isShort = true;
};

} // namespace vxlogd
