#include "Splitter.h"

#include <algorithm>

namespace vxview {

namespace {

using Kind = Record::Kind;

constexpr std::string_view PLAIN_END = "-------------------------\n";
constexpr std::string_view XML_START = "  <entry>\n", XML_END = "  </entry>\n";

/// The name of a field with "=", if the line begins so.
std::string_view nameOf(std::string_view line)
{
    const std::size_t end = line.find('=');
    const std::string_view name = line.substr(0, end == line.npos ? 0 : end + 1);
    const bool isName = std::ranges::all_of(name, [](unsigned char byte) { return byte > ' ' && byte != 0x7F; });
    return isName && name.size() > 1 ? name : std::string_view();
}

/// Where `text` stands at the start of a line, from `from` on; npos if nowhere.
std::size_t findLine(std::string_view bytes, std::string_view text, std::size_t from)
{
    for (std::size_t at = bytes.find(text, from); at != bytes.npos; at = bytes.find(text, at + 1)) {
        if (at == 0 || bytes[at - 1] == '\n')
            return at;
    }
    return bytes.npos;
}

} // namespace

std::string_view endOf(Form form)
{
    return form == Form::PLAIN ? PLAIN_END : form == Form::XML ? XML_END : "\n";
}

void Splitter::restart()
{
    m_searchedForLine = 0;
    m_searchedForEnd = 0;
}

std::size_t Splitter::next(std::string_view bytes, bool isLast, Record& record)
{
    const std::size_t end = bytes.find('\n', m_searchedForLine);
    if (end == bytes.npos && !isLast) {
        m_searchedForLine = bytes.size();
        return 0;
    }
    m_searchedForLine = 0;
    const std::string_view line = bytes.substr(0, end == bytes.npos ? end : end + 1);
    const bool isDocument = line == "<log>\n" || line == "</log>\n" || line.starts_with("<?xml ");
    std::size_t length = line.size();
    if (line.starts_with('{')) {
        m_form = Form::JSON;
        record.set(Kind::ENTRY, m_form, line);
    } else if (XML_START.starts_with(line) || line == XML_START) {
        length = nextXml(bytes, isLast, record);
    } else if (!isDocument && !nameOf(line).empty()) {
        length = nextPlain(bytes, isLast, record);
    } else {
        if (isDocument)
            m_form = Form::XML;
        record.set(isDocument ? Kind::MARKUP : Kind::FOREIGN, Form::UNKNOWN, line);
    }
    m_searchedForEnd = length == 0 ? bytes.size() : 0;
    return length;
}

std::size_t Splitter::nextXml(std::string_view bytes, bool isLast, Record& record)
{
    m_form = Form::XML;
    // After a kill, the next entry begins in the middle of the last one.
    const std::size_t back = m_searchedForEnd < XML_START.size() ? 1 : m_searchedForEnd - XML_START.size();
    const std::size_t end = findLine(bytes, XML_END, back);
    const std::size_t start = findLine(bytes.substr(0, end), XML_START, back);
    if (start != bytes.npos) {
        record.set(Kind::TORN, m_form, bytes.substr(0, start));
        return start;
    }
    if (end == bytes.npos && !isLast)
        return 0;
    const std::string_view piece = bytes.substr(0, end == bytes.npos ? end : end + XML_END.size());
    record.set(end == bytes.npos ? Kind::TORN : Kind::ENTRY, m_form, piece);
    return piece.size();
}

std::size_t Splitter::nextPlain(std::string_view bytes, bool isLast, Record& record)
{
    m_form = Form::PLAIN;
    const std::string_view first = nameOf(bytes.substr(0, bytes.find('\n')));
    const std::size_t back = m_searchedForEnd < PLAIN_END.size() ? 1 : m_searchedForEnd - PLAIN_END.size();
    const std::size_t end = findLine(bytes, PLAIN_END, back);
    // Each entry has the same first field. If it comes a second time, the writer was killed within the first entry.
    const std::size_t again
        = findLine(bytes.substr(0, end), first, std::max<std::size_t>(back - std::min(back, first.size()), 1));
    if (again != bytes.npos) {
        record.set(Kind::TORN, m_form, bytes.substr(0, again));
        return again;
    }
    if (end == bytes.npos && !isLast)
        return 0;
    const std::string_view piece = bytes.substr(0, end == bytes.npos ? end : end + PLAIN_END.size());
    record.set(end == bytes.npos ? Kind::TORN : Kind::ENTRY, m_form, piece);
    return piece.size();
}

} // namespace vxview
