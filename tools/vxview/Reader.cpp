#include "Reader.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace vxview {

namespace {

constexpr std::size_t BLOCK_SIZE = 256 * 1024;

/// What the bytes of a form may have in place of any character of a needle.
std::string_view escapeOf(Form form, std::string_view needle)
{
    if (form == Form::JSON) // "\u0061" for an "a", and some writers have "\/"
        return needle.find('/') == needle.npos ? "\\u" : "\\";
    return form == Form::XML ? "&#" : std::string_view();
}

} // namespace

Reader::Reader(const std::string& path, Access access, std::string needle)
    : m_source(path, access)
    , m_needle {std::move(needle)}
{
}

bool Reader::next()
{
    for (;;) {
        if (!m_needle.text.empty())
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
    for (Search* search : {&m_needle, &m_escape}) {
        search->isFound = search->isFound && search->at >= m_begin;
        move(search->at);
        move(search->from);
    }
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
        const std::string end = "\n" + std::string(form == Form::JSON ? "{" : endOf(form));
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
    if (const std::string_view escape = escapeOf(form, m_needle.text); m_escape.text != escape)
        m_escape = {std::string(escape)};
    const std::size_t place = std::min(findNext(m_needle), findNext(m_escape));
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

/// `m_end` if the text does not occur any more.
std::size_t Reader::findNext(Search& search)
{
    if (search.text.empty() || (search.isFound && search.at >= m_begin))
        return search.text.empty() ? m_end : search.at;
    const std::size_t from = std::max(search.from, m_begin);
    const char* const bytes = m_buffer.get();
    const void* const found
        = from < m_end ? memmem(bytes + from, m_end - from, search.text.data(), search.text.size()) : nullptr;
    search.isFound = found != nullptr;
    if (search.isFound) {
        search.at = static_cast<std::size_t>(static_cast<const char*>(found) - bytes);
        search.from = search.at + 1;
        return search.at;
    }
    const std::size_t tail = search.text.size() - 1; // an occurrence may begin there and end in the next bytes
    search.from = std::max(from, m_end - std::min(m_end, tail));
    return m_end;
}

/// Of the piece that contains `place`.
std::size_t Reader::startOfPiece(std::size_t place) const
{
    const std::string_view end = endOf(m_splitter.getForm());
    const std::string_view bytes(m_buffer.get() + m_begin, place - m_begin);
    for (std::size_t found = bytes.rfind(end); found != bytes.npos; found = bytes.rfind(end, found - 1)) {
        if (end.size() == 1 || found == 0 || bytes[found - 1] == '\n')
            return m_begin + found + end.size();
        if (found == 0)
            break;
    }
    return m_begin;
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
