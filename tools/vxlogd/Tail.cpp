#include "Tail.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace vxlogd {

namespace {

constexpr std::size_t MOST_LINES = 2000;
constexpr std::size_t MOST_BYTES = 8 * 1024 * 1024;
constexpr std::size_t MOST_LEVELS = 16; ///< of a minute: levels come from the clients

std::size_t bytesOf(const Tail::Line& line)
{
    constexpr std::size_t FIXED = 256;
    return FIXED + line.text->view().size() * sizeof(char16_t);
}

std::int64_t currentMinute()
{
    return std::chrono::floor<std::chrono::minutes>(std::chrono::system_clock::now()).time_since_epoch().count();
}

} // namespace

Tail::Watch::~Watch()
{
    if (--m_tail.m_watches == 0)
        m_tail.clear();
}

void Tail::add(std::span<const Batch::Span> written) noexcept
{
    if (m_watches == 0)
        return;
    try {
        std::size_t size = 0;
        for (const Batch::Span& span : written)
            size += span.count;
        const std::size_t leftOut = size - std::min(size, MOST_LINES);
        std::vector<Line> lines;
        lines.reserve(size - leftOut);
        Counts counts;
        std::size_t index = 0;
        for (const Batch::Span& span : written) {
            vx::Reference<const vx::String> peer;
            for (std::size_t place = span.first; place < span.first + span.count; ++place) {
                const Fields fields = span.batch->getFields(place);
                count(counts, fields.level, 1);
                if (index++ < leftOut)
                    continue;
                if (peer == nullptr)
                    peer = new vx::String(fields.peer);
                lines.push_back({vx::Reference<const vx::Integer64>(new vx::Integer64(fields.sequence)),
                    vx::Reference<const vx::log::ZonedTimeStamp>(fields.time), peer,
                    vx::Reference<const vx::Integer32>(new vx::Integer32(fields.level)),
                    vx::Reference<const vx::String>(new vx::String(fields.text))});
            }
        }
        append(std::move(lines), leftOut, counts);
    } catch (...) { // no memory: those who watch see a gap in the sequence numbers of the log
    }
}

void Tail::count(Counts& counts, std::int32_t level, std::uint64_t count)
{
    counts[counts.contains(level) || counts.size() < MOST_LEVELS ? level : OTHER_LEVELS] += count;
}

void Tail::append(std::vector<Line> lines, std::uint64_t leftOut, const Counts& counts)
{
    const std::int64_t now = currentMinute();
    std::vector<Line> old; // released after the lock
    {
        const std::lock_guard lock(m_lock);
        if (m_minutes.empty() || m_minutes.back().start < now)
            m_minutes.push_back({now});
        while (m_minutes.front().start + static_cast<std::int64_t>(MINUTES) <= m_minutes.back().start)
            m_minutes.pop_front();
        for (const auto& [level, number] : counts)
            count(m_minutes.back().counts, level, number);
        m_end += leftOut;
        if (leftOut > 0) { // all that were kept are older
            std::ranges::move(m_lines, std::back_inserter(old));
            m_lines.clear();
            m_bytes = 0;
        }
        for (Line& line : lines) {
            m_bytes += bytesOf(line);
            m_lines.push_back(std::move(line));
            ++m_end;
        }
        while (m_lines.size() > MOST_LINES || (m_bytes > MOST_BYTES && m_lines.size() > 1)) {
            m_bytes -= bytesOf(m_lines.front());
            old.push_back(std::move(m_lines.front()));
            m_lines.pop_front();
        }
    }
    m_changed.notify_all();
}

void Tail::clear()
{
    std::deque<Line> old;
    const std::lock_guard lock(m_lock);
    if (m_watches == 0) {
        old.swap(m_lines);
        m_bytes = 0;
    }
}

std::uint64_t Tail::begin() const
{
    const std::lock_guard lock(m_lock);
    return m_end - m_lines.size();
}

Tail::Portion Tail::read(std::uint64_t from, std::size_t most, std::chrono::milliseconds patience) const
{
    Portion portion;
    portion.lines.reserve(std::min(most, MOST_LINES));
    std::unique_lock lock(m_lock);
    if (from > m_end)
        from = m_end - m_lines.size();
    m_changed.wait_for(lock, patience, [&] { return m_end > from || m_isClosed; });
    const std::uint64_t first = std::max(from, m_end - m_lines.size());
    portion.missed = first - from;
    auto next = m_lines.end() - static_cast<std::ptrdiff_t>(m_end - first);
    while (next != m_lines.end() && portion.lines.size() < most)
        portion.lines.push_back(*next++);
    portion.next = first + portion.lines.size();
    return portion;
}

std::vector<Tail::Minute> Tail::getMinutes() const
{
    const std::int64_t oldest = currentMinute() - static_cast<std::int64_t>(MINUTES) + 1;
    const std::lock_guard lock(m_lock);
    std::vector<Minute> minutes;
    std::ranges::copy_if(
        m_minutes, std::back_inserter(minutes), [&](const Minute& each) { return each.start >= oldest; });
    return minutes;
}

void Tail::close()
{
    {
        const std::lock_guard lock(m_lock);
        m_isClosed = true;
    }
    m_changed.notify_all();
}

std::string quoted(std::u16string_view text)
{
    constexpr char DIGITS[] = "0123456789abcdef";
    std::string result = "\"";
    for (const char16_t unit : text) {
        if (unit == u'"' || unit == u'\\')
            result.append({'\\', static_cast<char>(unit)});
        else if (unit >= u' ' && unit < 0x7F && unit != u'<' && unit != u'>' && unit != u'&')
            result += static_cast<char>(unit);
        else {
            result += "\\u";
            for (int shift = 12; shift >= 0; shift -= 4)
                result += DIGITS[unit >> shift & 0xF];
        }
    }
    return result += '"';
}

std::string toJson(const Tail::Line& line, std::size_t mostText)
{
    std::u16string_view text = line.text->view();
    const std::size_t all = text.size();
    text = text.substr(0, mostText);
    if (text.size() < all && (text.back() & 0xFC00) == 0xD800)
        text.remove_suffix(1); // half of a character
    std::string result = "{\"sequence\":" + std::to_string(line.sequence->toInt64());
    result.append(",\"timestamp\":").append(quoted(line.time->toString()));
    result.append(",\"level\":").append(std::to_string(line.level->toInt64()));
    result.append(",\"peer\":").append(quoted(*line.peer)).append(",\"text\":").append(quoted(text));
    if (text.size() < all)
        result.append(",\"cut\":").append(std::to_string(all - text.size()));
    return result += '}';
}

} // namespace vxlogd
