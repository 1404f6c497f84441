#include "Backlog.h"

#include <algorithm>
#include <random>

namespace vxlog {

std::string Backlog::newId()
{
    constexpr std::size_t LENGTH = 32;
    constexpr char DIGITS[] = "0123456789abcdef";
    std::random_device random;
    std::uniform_int_distribution<std::size_t> digit(0, 15);
    std::string id(LENGTH, '0');
    std::ranges::generate(id, [&] { return DIGITS[digit(random)]; });
    return id;
}

bool MemoryBacklog::append(std::string_view line)
{
    constexpr std::size_t MOST_BYTES = 4 * 1024 * 1024; // a longer line has room if it is alone
    const std::lock_guard lock(m_lock);
    if (!m_ends.empty() && m_bytes.size() - m_start + line.size() >= MOST_BYTES)
        return false;
    m_bytes.append(line);
    m_bytes += '\n';
    m_ends.push_back(m_dropped + m_bytes.size());
    return true;
}

Backlog::Range MemoryBacklog::range() const
{
    const std::lock_guard lock(m_lock);
    return {m_first, m_first + m_ends.size()};
}

std::size_t MemoryBacklog::read(std::uint64_t from, std::string& target, std::size_t most)
{
    const std::lock_guard lock(m_lock);
    const std::uint64_t end = m_first + m_ends.size();
    const std::size_t start = from == m_first ? m_start : endOf(from - 1);
    std::uint64_t line = from;
    while (line < end && (line == from || endOf(line) - start <= most))
        ++line;
    if (line > from)
        target.append(m_bytes, start, endOf(line - 1) - start);
    return static_cast<std::size_t>(line - from);
}

void MemoryBacklog::acknowledge(std::uint64_t last)
{
    constexpr std::size_t WORTH_MOVING = 256 * 1024;
    const std::lock_guard lock(m_lock);
    while (m_first <= last && !m_ends.empty()) {
        m_start = endOf(m_first);
        m_ends.pop_front();
        ++m_first;
    }
    if (m_start == m_bytes.size() || m_start >= WORTH_MOVING) {
        m_bytes.erase(0, m_start);
        m_dropped += m_start;
        m_start = 0;
    }
}

std::size_t MemoryBacklog::endOf(std::uint64_t line) const
{
    return static_cast<std::size_t>(m_ends[static_cast<std::size_t>(line - m_first)] - m_dropped);
}

} // namespace vxlog
