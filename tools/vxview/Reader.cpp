#include "Reader.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace vxview {

namespace {

constexpr std::size_t BLOCK_SIZE = 256 * 1024;

/// What may stand in the bytes of an entry in place of a character of a needle: "\\u0061" for an "a", "\\/", "&#97;". A
/// log may change its form, so that all of them are looked for in each.
struct Escape {
    char first;
    std::string_view second;
};
constexpr Escape ESCAPES[] = {{'\\', "u/"}, {'&', "#"}};

/// Returns the end if there is none. A character at the end may be the first one of an escape.
const char* findEscape(const char* bytes, const char* end, const Escape& escape)
{
    for (; bytes < end; ++bytes) {
        bytes = static_cast<const char*>(std::memchr(bytes, escape.first, static_cast<std::size_t>(end - bytes)));
        if (bytes == nullptr)
            return end;
        if (bytes + 1 == end || escape.second.find(bytes[1]) != escape.second.npos)
            return bytes;
        if (bytes[1] == escape.first)
            ++bytes; // an escaped backslash
    }
    return end;
}

/// The place of the byte of `needle` that is likely to be the rarest one in a log.
std::size_t rarestIn(std::string_view needle)
{
    static constexpr std::string_view FREQUENT = "zqjxkvwybgpfmucdlhrsonaite.:/=-0123456789 \""; // the rarest first
    std::size_t rarest = 0;
    std::size_t best = FREQUENT.size() + 1;
    for (std::size_t index = 0; index < needle.size(); ++index) {
        const std::size_t rank = FREQUENT.find(needle[index]) + 1; // 0 for all others: capitals, and bytes beyond ASCII
        if (rank < best) {
            best = rank;
            rarest = index;
        }
    }
    return rarest;
}

} // namespace

Reader::Reader(const std::string& path, Access access, std::string needle)
    : m_source(path, access)
    , m_needle(std::move(needle))
    , m_rarest(rarestIn(m_needle))
{
}

bool Reader::next()
{
    for (;;) {
        if (!m_needle.empty())
            skipUnwanted();
        if (m_begin < m_end) {
            if (const std::size_t length = m_splitter.next(rest(), m_isFileOver, m_record); length > 0) {
                m_begin += length;
                return true;
            }
        }
        if (!fill())
            return false;
    }
}

/// Gets more bytes, or finds out that there are no more. False if `next` cannot go on at the moment.
bool Reader::fill()
{
    if (m_isFileOver) { // all of its bytes have been split
        if (!m_source.advance()) {
            m_isOver = !m_source.mayAdvance();
            return false;
        }
        m_isFileOver = false;
    }
    makeRoom();
    const std::size_t count = m_source.read(m_buffer.get() + m_end, m_capacity - m_end);
    m_end += count;
    if (count > 0)
        return true;
    m_isFileOver = m_source.isAtEnd();
    return m_isFileOver;
}

void Reader::makeRoom()
{
    const std::size_t kept = m_end - m_begin;
    if (m_capacity - kept < BLOCK_SIZE) {
        const std::size_t capacity = std::max(2 * BLOCK_SIZE, 2 * m_capacity);
        std::unique_ptr<char[]> buffer(new char[capacity]);
        std::copy_n(m_buffer.get() + m_begin, kept, buffer.get());
        m_buffer = std::move(buffer);
        m_capacity = capacity;
    } else {
        std::memmove(m_buffer.get(), m_buffer.get() + m_begin, kept);
    }
    const auto move = [this](std::size_t& place) { place -= std::min(place, m_begin); };
    move(m_wanted);
    m_isNeedleKnown = m_isNeedleKnown && m_nextNeedle >= m_begin;
    move(m_nextNeedle);
    for (std::size_t& next : m_nextEscapes)
        move(next);
    m_begin = 0;
    m_end = kept;
}

bool Reader::skipToEnd(std::int64_t size)
{
    if (!m_source.skipToEnd(size))
        return false;
    // The first bytes are the rest of a piece. What looks like a form decides where the next one begins.
    while (m_end - m_begin < static_cast<std::size_t>(size) && fill())
        ;
    std::size_t start = m_end;
    for (const Form form : {Form::PLAIN, Form::XML, Form::JSON}) {
        std::string end = "\n";
        end += form == Form::JSON ? std::string_view("{") : endOf(form);
        const std::size_t found = rest().find(end);
        if (found == std::string_view::npos)
            continue;
        start = m_begin + found + (form == Form::JSON ? 1 : end.size());
        break;
    }
    m_begin = start;
    return true;
}

/// Moves to the next piece that may contain the needle.
void Reader::skipUnwanted()
{
    const Form form = m_splitter.getForm();
    if (form == Form::UNKNOWN || m_begin < m_wanted || m_begin == m_end)
        return;
    const std::size_t place = std::min(nextNeedle(), nextEscape());
    const std::size_t start = startOfPiece(place);
    if (form == Form::JSON && !(isLineOfJson(start) && (place == m_end || m_buffer[start] == '{'))) {
        m_wanted = m_end; // entries of another form follow: looks at each piece
        return;
    }
    if (start > m_begin)
        m_splitter.restart();
    m_begin = start;
    if (place < m_end)
        m_wanted = place + 1;
}

/// Looks for the rarest byte of the needle first: that is the fastest search that the C library has.
std::size_t Reader::findNeedle(std::string_view bytes) const
{
    const std::size_t size = m_needle.size();
    for (std::size_t at = 0; bytes.size() - at >= size; ++at) {
        const std::size_t last = bytes.size() - size + m_rarest; // where the byte may be at most
        const void* const found
            = std::memchr(bytes.data() + at + m_rarest, m_needle[m_rarest], last + 1 - at - m_rarest);
        if (found == nullptr)
            return bytes.npos;
        at = static_cast<std::size_t>(static_cast<const char*>(found) - bytes.data()) - m_rarest;
        if (std::memcmp(bytes.data() + at, m_needle.data(), size) == 0)
            return at;
    }
    return bytes.npos;
}

/// Where the needle occurs next; `m_end` if it does not occur in these bytes.
std::size_t Reader::nextNeedle()
{
    if (m_nextNeedle >= m_begin && m_isNeedleKnown)
        return m_nextNeedle;
    const std::size_t from = std::max(m_nextNeedle, m_begin);
    const char* const bytes = m_buffer.get();
    const std::size_t found = findNeedle({bytes + from, m_end - from});
    m_isNeedleKnown = found != std::string_view::npos;
    if (m_isNeedleKnown) {
        m_nextNeedle = from + found;
        return m_nextNeedle;
    }
    m_nextNeedle = m_end - std::min(m_end - from, m_needle.size() - 1); // it may begin there and end in later bytes
    return m_end;
}

std::size_t Reader::nextEscape()
{
    static_assert(std::size(ESCAPES) == std::size(decltype(m_nextEscapes) {}));
    std::size_t nearest = m_end;
    for (std::size_t index = 0; index < std::size(ESCAPES); ++index) {
        std::size_t& next = m_nextEscapes[index];
        const char* const from = m_buffer.get() + std::max(next, m_begin);
        next = static_cast<std::size_t>(findEscape(from, m_buffer.get() + m_end, ESCAPES[index]) - m_buffer.get());
        nearest = std::min(nearest, next);
    }
    return nearest;
}

/// Of the piece that contains `place`.
std::size_t Reader::startOfPiece(std::size_t place) const
{
    const std::string_view end = endOf(m_splitter.getForm());
    std::string_view bytes(m_buffer.get() + m_begin, place - m_begin);
    for (;;) {
        const void* const found = memrchr(bytes.data(), '\n', bytes.size());
        if (found == nullptr)
            return m_begin;
        bytes = bytes.substr(0, static_cast<std::size_t>(static_cast<const char*>(found) - bytes.data()) + 1);
        const bool isEnd = bytes.ends_with(end);
        if (isEnd && (end.size() == 1 || bytes.size() == end.size() || bytes[bytes.size() - end.size() - 1] == '\n'))
            return m_begin + bytes.size();
        bytes.remove_suffix(1);
    }
}

/// Whether the line that ends at `end` begins as an entry in JSON does.
bool Reader::isLineOfJson(std::size_t end) const
{
    if (end == m_begin)
        return true;
    const std::string_view bytes(m_buffer.get() + m_begin, end - 1 - m_begin);
    const std::size_t before = bytes.rfind('\n');
    return m_buffer[before == bytes.npos ? m_begin : m_begin + before + 1] == '{';
}

} // namespace vxview
