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

std::size_t lineAfter(std::string_view bytes, std::size_t place)
{
    const std::size_t end = bytes.find('\n', place);
    return end == bytes.npos ? end : end + 1;
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
        m_form = Form::XML;
        length = nextEntry(bytes, isLast, XML_START, XML_END, record);
    } else if (!isDocument && !nameOf(line).empty()) {
        m_form = Form::PLAIN;
        length = nextEntry(bytes, isLast, nameOf(line), PLAIN_END, record); // each entry has the same first field
    } else {
        if (isDocument)
            m_form = Form::XML;
        record.set(isDocument ? Kind::MARKUP : Kind::FOREIGN, Form::UNKNOWN, line);
    }
    if (length > 0)
        m_searchedForEnd = 0;
    return length;
}

/// Finds the end of an entry, which has more than one line. If another one starts within it, its writer was killed.
std::size_t Splitter::nextEntry(
    std::string_view bytes, bool isLast, std::string_view start, std::string_view end, Record& record)
{
    std::size_t line = m_searchedForEnd > 0 ? m_searchedForEnd : lineAfter(bytes, 0);
    for (std::size_t next = 0; line != bytes.npos; line = next) {
        next = lineAfter(bytes, line);
        const std::string_view rest = bytes.substr(line);
        if (rest.starts_with(end)) {
            record.set(Kind::ENTRY, m_form, bytes.substr(0, line + end.size()));
            return line + end.size();
        }
        if (rest.starts_with(start)) {
            record.set(Kind::TORN, m_form, bytes.substr(0, line));
            return line;
        }
        if (next == bytes.npos)
            break;
    }
    if (!isLast) {
        m_searchedForEnd = line == bytes.npos ? 0 : line;
        return 0;
    }
    record.set(Kind::TORN, m_form, bytes);
    return bytes.size();
}

} // namespace vxview
