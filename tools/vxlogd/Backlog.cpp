#include "Backlog.h"

namespace vxlogd {

namespace {

constexpr std::size_t LINE_COST = 1024; // of an entry without its text
constexpr std::size_t FEW_LINES = 2048;

} // namespace

void Backlog::setLimit(std::size_t bytes)
{
    const std::lock_guard lock(m_lock);
    m_limit = bytes;
}

void Backlog::add(std::size_t bytes)
{
    const std::lock_guard lock(m_lock);
    m_isShort = ++m_size.lines < FEW_LINES;
    m_size.bytes += bytes + LINE_COST;
    if (m_size.bytes >= m_limit)
        m_isFull = true;
}

bool Backlog::remove(std::size_t lines, std::size_t bytes)
{
    const std::lock_guard lock(m_lock);
    m_size.lines -= lines;
    m_isShort = m_size.lines < FEW_LINES;
    m_size.bytes -= bytes + lines * LINE_COST;
    return m_size.bytes <= m_limit / 2 && m_isFull.exchange(false);
}

Backlog::Size Backlog::getSize() const
{
    const std::lock_guard lock(m_lock);
    return m_size;
}

} // namespace vxlogd
