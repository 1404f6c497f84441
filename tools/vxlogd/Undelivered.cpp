#include "Undelivered.h"

#include <new>
#include <utility>

namespace vxlogd {

namespace {

constexpr std::size_t MOST_LINES = 1'000'000; // about 80 MB

} // namespace

Undelivered::Undelivered(bool isActive, std::function<void()> onChange)
    : m_onChange(std::move(onChange))
    , m_isActive(isActive)
{
}

void Undelivered::setActive(bool isActive)
{
    {
        const std::lock_guard lock(m_lock);
        m_isActive = isActive;
        endWritten();
        updateRoom();
    }
    m_onChange();
}

void Undelivered::add(const Batch::Span& lines)
{
    const Batch& batch = *lines.batch;
    const std::lock_guard lock(m_lock);
    std::size_t count = 0;
    try {
        for (; count < lines.count; ++count)
            push(batch.getClient(), batch.getProgress(), lines.firstLine() + count, lines.bytes(count, 1));
        batch.getProgress()->await(lines.firstLine(), lines.count, lines.bytes());
    } catch (...) {
        for (; count > 0; --count) {
            drop(m_lines.back().client);
            m_lines.pop_back();
        }
        throw;
    }
    updateRoom();
}

void Undelivered::setWritten()
{
    bool hasRoom = false;
    {
        const std::lock_guard lock(m_lock);
        m_written = m_popped + m_lines.size();
        endWritten();
        hasRoom = updateRoom();
    }
    if (hasRoom)
        m_onChange();
}

void Undelivered::restore(const std::string& client, const std::shared_ptr<Progress>& progress, std::uint64_t line)
{
    const std::lock_guard lock(m_lock);
    if (m_lines.size() >= MOST_LINES || progress->isWaiting(line))
        return;
    progress->begin(0);
    progress->await(line, 1, 0);
    push(client, progress, line, 0);
}

void Undelivered::deliver(const std::string& client, std::uint64_t line)
{
    bool hasRoom = false;
    {
        const std::lock_guard lock(m_lock);
        const auto found = m_clients.find(client);
        if (found == m_clients.end() || !found->second.progress->isWaiting(line))
            return;
        while (m_lines.front().client != &*found || m_lines.front().number != line)
            endFirst(false);
        endFirst(true);
        hasRoom = updateRoom();
    }
    if (hasRoom)
        m_onChange();
}

std::uint64_t Undelivered::getWritten() const
{
    const std::lock_guard lock(m_lock);
    return m_written;
}

void Undelivered::loseBefore(std::uint64_t mark)
{
    const std::lock_guard lock(m_lock);
    while (m_popped < mark && !m_lines.empty())
        endFirst(false);
    updateRoom();
}

void Undelivered::setTrouble(const std::string& trouble)
{
    {
        const std::lock_guard lock(m_lock);
        if (trouble == (m_trouble != nullptr ? *m_trouble : std::string()))
            return;
        m_trouble = trouble.empty() ? nullptr : std::make_shared<const std::string>(trouble);
    }
    m_onChange();
}

std::shared_ptr<const std::string> Undelivered::getTrouble() const
{
    const std::lock_guard lock(m_lock);
    return m_trouble;
}

std::size_t Undelivered::countLines() const
{
    const std::lock_guard lock(m_lock);
    std::size_t lines = 0;
    for (const auto& [id, client] : m_clients)
        lines += client.progress->state().waitingLines;
    return lines;
}

void Undelivered::push(
    const std::string& client, const std::shared_ptr<Progress>& progress, std::uint64_t line, std::size_t bytes)
{
    const auto [found, isNew] = m_clients.try_emplace(client);
    try {
        m_lines.push_back({&*found, line, bytes});
    } catch (...) {
        if (isNew)
            m_clients.erase(found);
        throw;
    }
    found->second.progress = progress; // a client that was forgotten may come back with another one
    ++found->second.lines;
}

void Undelivered::drop(Clients::value_type* client)
{
    if (--client->second.lines == 0)
        m_clients.erase(m_clients.find(client->first));
}

void Undelivered::endFirst(bool hasArrived)
{
    const Line line = m_lines.front();
    Progress& progress = *line.client->second.progress;
    try {
        if (hasArrived)
            progress.deliver(line.number, line.bytes);
        else
            progress.lose(line.number, line.bytes);
    } catch (const std::bad_alloc&) {
        progress.lose(line.number, line.bytes); // the client sends it again
    }
    drop(line.client);
    m_lines.pop_front();
    ++m_popped;
}

/// Lines that are in the log do not wait unless this is active.
void Undelivered::endWritten()
{
    while (!m_isActive && m_popped < m_written)
        endFirst(true);
}

/// True if there is room again.
bool Undelivered::updateRoom()
{
    const std::size_t limit = m_isFull ? MOST_LINES / 2 : MOST_LINES;
    return m_isFull.exchange(m_lines.size() >= limit) && !m_isFull;
}

} // namespace vxlogd
