#include "Form.h"

#include <vx/Exception.h>
#include <vx/NumberBoxes.h>
#include <vx/String.h>
#include <vx/TerminatedText.h>
#include <vx/io/EntryStream.h>
#include <vx/io/OutputStreamWriter.h>
#include <vx/log/BasicLogWriter.h>
#include <vx/log/JsonLogWriter.h>
#include <vx/log/XmlLogWriter.h>

#include <algorithm>
#include <utility>

namespace vxlogd {

using vx::Reference;
using vx::String;

namespace {

constexpr vx::log::ZonedTime SAMPLE_TIME {.time
    = {.year = 2001, .month = 2, .dayOfWeek = 6, .day = 3, .hour = 4, .minute = 5, .second = 6, .milliseconds = 789},
    .minutesAhead = 754};
constexpr Fields SAMPLE {.sequence = 4'711'000'001,
    .level = 471'100'002,
    .time = nullptr,
    .peer = "(peer)",
    .text = "(text)",
    .client = "(client)",
    .line = 4'711'000'003};

} // namespace

/// Prints entries with the writer of a log.
class Form::Printer {
public:
    explicit Printer(const Settings& settings)
        : m_hasClient(settings.forwardAck == ForwardAck::BROKERS)
        , m_writer(createWriter(settings, *m_block))
    {
    }

    std::string print(std::string_view text = SAMPLE.text)
    {
        m_block->cut(0);
        Fields sample = SAMPLE;
        sample.text = text;
        if (!m_hasClient)
            sample.client = {};
        sample.time = m_time.get();
        m_writer->process(createEntry(sample).get());
        return std::string(m_block->view());
    }
    std::string getTime() const { return m_time->toString().toUtf8(); }
    bool hasClient() const { return m_hasClient; }

private:
    const bool m_hasClient;
    const Reference<const vx::log::ZonedTimeStamp> m_time {new vx::log::ZonedTimeStamp(SAMPLE_TIME)};
    const Reference<Block> m_block {new Block};
    const Reference<vx::log::ILogProcessor> m_writer;
};

Reference<vx::log::ILogProcessor> createWriter(const Settings& settings, Block& block)
{
    constexpr std::int32_t BUFFER_SIZE = 64 * 1024;
    const Reference<vx::io::Writer> writer(new vx::io::OutputStreamWriter(
        new vx::io::EntryStream(&block), vx::TerminatedText(String(std::string_view(settings.encoding))), BUFFER_SIZE));
    Reference<vx::log::ILogProcessor> document = settings.format == Format::XML
        ? vx::log::XmlLogWriter::create(writer.get(), vx::log::XmlLogWriter::Values::ESCAPED)
        : settings.format == Format::JSON ? vx::log::JsonLogWriter::create(writer.get())
                                          : vx::log::BasicLogWriter::create(writer.get());
    writer->flush();
    return document;
}

Reference<vx::log::LogEntry> createEntry(const Fields& fields)
{
    Reference<vx::log::LogEntry> entry = vx::log::LogEntry::create();
    const auto set = [&](const char16_t* name, const vx::Object* value) {
        entry->setField(name, Reference<const vx::Object>(value).get());
    };
    set(u"peer", new String(fields.peer));
    set(u"level", new vx::Integer32(fields.level));
    set(u"text", new String(fields.text));
    set(u"timestamp", fields.time);
    set(u"sequence", new vx::Integer64(fields.sequence));
    if (!fields.client.empty()) {
        set(u"client", new String(fields.client));
        set(u"line", new vx::Integer64(fields.line));
    }
    return entry;
}

std::shared_ptr<const Form> Form::learn(const Settings& settings)
{
    const auto form = std::make_shared<Form>();
    Printer printer(settings);
    try {
        if (form->split(printer) && form->learnUnits(printer))
            return form;
    } catch (const vx::Exception&) { // not every character has a form in the encoding of the log
    }
    return nullptr;
}

/// False if a field is not in the sample, or not in the bytes of UTF-8, or if one precedes the sequence number.
bool Form::split(Printer& printer)
{
    const std::string sample = printer.print();
    const std::string sequence = std::to_string(SAMPLE.sequence);
    std::vector<std::pair<Field, std::string>> values
        = {{Field::LEVEL, std::to_string(SAMPLE.level)}, {Field::TIME, printer.getTime()},
            {Field::PEER, std::string(SAMPLE.peer)}, {Field::TEXT, std::string(SAMPLE.text)}};
    m_hasClient = printer.hasClient();
    if (m_hasClient) {
        values.emplace_back(Field::CLIENT, SAMPLE.client);
        values.emplace_back(Field::LINE, std::to_string(SAMPLE.line));
    }
    const std::size_t first = sample.find(sequence);
    if (first == sample.npos)
        return false;
    m_head = sample.substr(0, first);
    std::string* after = &m_afterSequence;
    std::string_view rest = std::string_view(sample).substr(first + sequence.size());
    m_places.reserve(values.size());
    while (m_places.size() < values.size()) {
        const auto next
            = std::ranges::min_element(values, {}, [&](const auto& each) { return rest.find(each.second); });
        const std::size_t place = rest.find(next->second);
        if (place == rest.npos)
            return false;
        *after = rest.substr(0, place);
        rest.remove_prefix(place + next->second.size());
        after = &m_places.emplace_back(Place {next->first, {}}).after;
    }
    *after = rest;
    return true;
}

/// False if the log is not in UTF-8.
bool Form::learnUnits(Printer& printer)
{
    constexpr unsigned char FIRST_OF_MANY = 0x80; // bytes of the characters beyond ASCII
    const std::string before(1, SAMPLE.text.front()), after(1, SAMPLE.text.back());
    const std::string empty = printer.print({});
    const auto printed = [&](const std::string& text) { // it begins where the two entries begin to differ
        const std::string bytes = printer.print(before + text + after);
        const auto place = static_cast<std::size_t>(std::ranges::mismatch(bytes, empty).in1 - bytes.begin());
        return bytes.substr(place + 1, bytes.size() - empty.size() - 2);
    };
    for (unsigned char unit = 0; unit < FIRST_OF_MANY; ++unit) {
        const std::string text(1, static_cast<char>(unit));
        m_escapes[unit] = printed(text);
        m_units[unit] = m_escapes[unit] == text ? Unit::AS_IT_IS : Unit::ESCAPED;
    }
    const std::string many = "ä中😀";
    if (printed(many) != many)
        return false;
    std::fill(m_units.begin() + FIRST_OF_MANY, m_units.end(), Unit::AS_IT_IS);
    const std::string nonCharacter = "\uFFFF";
    if (printed(nonCharacter) != nonCharacter)
        m_units[static_cast<unsigned char>(nonCharacter.front())] = Unit::UNKNOWN;
    return true;
}

bool Form::appendRest(std::string& bytes, const Fields& fields, std::string_view time) const
{
    bytes += m_afterSequence;
    for (const Place& place : m_places) {
        bool isKnown = true;
        switch (place.field) {
        case Field::LEVEL:
            bytes += std::to_string(fields.level);
            break;
        case Field::TIME:
            isKnown = appendText(bytes, time);
            break;
        case Field::PEER:
            isKnown = appendText(bytes, fields.peer);
            break;
        case Field::TEXT:
            isKnown = appendText(bytes, fields.text);
            break;
        case Field::CLIENT:
            isKnown = appendText(bytes, fields.client);
            break;
        case Field::LINE:
            bytes += std::to_string(fields.line);
            break;
        }
        if (!isKnown)
            return false;
        bytes += place.after;
    }
    return true;
}

bool Form::appendText(std::string& bytes, std::string_view text) const
{
    const auto unitOf = [&](char byte) { return m_units[static_cast<unsigned char>(byte)]; };
    while (!text.empty()) {
        const auto end = std::ranges::find_if(text, [&](char byte) { return unitOf(byte) != Unit::AS_IT_IS; });
        bytes.append(text.begin(), end);
        text.remove_prefix(static_cast<std::size_t>(end - text.begin()));
        if (text.empty())
            break;
        if (unitOf(text.front()) == Unit::UNKNOWN)
            return false;
        bytes += m_escapes[static_cast<unsigned char>(text.front())];
        text.remove_prefix(1);
    }
    return true;
}

} // namespace vxlogd
