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
#include <charconv>
#include <iterator>
#include <limits>
#include <new>
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
constexpr std::string_view MANY = "ä中😀"; // characters of 2, 3 and 4 bytes in UTF-8

} // namespace

/// Prints entries with the writer of a log.
class Form::Printer {
public:
    explicit Printer(const Settings& settings)
        : m_hasClient(settings.forwardAck == ForwardAck::BROKERS)
        , m_writer(createWriter(settings, *m_block))
    {
    }

    Fields getSample(std::string_view text = SAMPLE.text) const
    {
        Fields sample = SAMPLE;
        sample.text = text;
        if (!m_hasClient)
            sample.client = {};
        sample.time = m_time.get();
        return sample;
    }
    std::string print(const Fields& fields)
    {
        m_block->cut(0);
        m_writer->process(createEntry(fields).get());
        return std::string(m_block->view());
    }
    std::string print(std::string_view text = SAMPLE.text) { return print(getSample(text)); }
    std::string getTime() const { return m_time->toString().toUtf8(); }
    bool hasClient() const { return m_hasClient; }

private:
    const bool m_hasClient;
    const Reference<const vx::log::ZonedTimeStamp> m_time {new vx::log::ZonedTimeStamp(SAMPLE_TIME)};
    const Reference<Block> m_block {new Block};
    const Reference<vx::log::ILogProcessor> m_writer;
};

class Form::Encoder {
public:
    /// Encodes `first`, which may be preceded by a byte order mark.
    Encoder(const std::string& encoding, std::string_view first)
        : m_writer(new vx::io::OutputStreamWriter(
            m_block.get(), vx::TerminatedText(String(std::string_view(encoding))), BUFFER_SIZE))
    {
        encode(first);
    }

    /// `text` is in UTF-8. The result is valid up to the next call.
    std::string_view encode(std::string_view text)
    {
        m_block->cut(0);
        m_writer->write(String(text));
        m_writer->flush();
        return m_block->view();
    }

private:
    static constexpr std::int32_t BUFFER_SIZE = 4096;

    const Reference<Block> m_block {new Block};
    const Reference<vx::io::OutputStreamWriter> m_writer;
};

Form::Form() = default;

Form::~Form() = default;

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
    Settings utf8 = settings;
    utf8.encoding = Settings().encoding;
    try {
        Printer printer(utf8);
        if (form->split(printer) && form->learnUnits(printer) && (isUtf8(settings) || form->learnEncoding(settings)))
            return form;
    } catch (const vx::Exception&) { // not every character has a form in the encoding of the log
    }
    return nullptr;
}

/// False if a field is not in the sample, or if one precedes the sequence number.
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

bool Form::learnUnits(Printer& printer)
{
    constexpr unsigned char FIRST_OF_MANY = 0x80; // bytes of the characters beyond ASCII
    const std::string before(1, SAMPLE.text.front()), after(1, SAMPLE.text.back());
    const std::string empty = printer.print(std::string_view());
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
    const std::string many(MANY);
    if (printed(many) != many)
        return false;
    std::fill(m_units.begin() + FIRST_OF_MANY, m_units.end(), Unit::AS_IT_IS);
    const std::string nonCharacter = "\uFFFF";
    if (printed(nonCharacter) != nonCharacter)
        m_units[static_cast<unsigned char>(nonCharacter.front())] = Unit::UNKNOWN;
    return true;
}

/// False if the entries that it makes are not those of the writer.
bool Form::learnEncoding(const Settings& settings)
{
    Printer printer(settings);
    m_encoding = settings.encoding;
    m_beginsOtherwise = printer.print() != printer.print();
    Encoder encoder(m_encoding, m_head);
    const std::string head(encoder.encode(m_head));
    for (std::size_t digit = 0; digit < m_digits.size(); ++digit) {
        m_headText = m_head + static_cast<char>('0' + digit);
        m_digits[digit] = encoder.encode(m_headText).substr(head.size());
    }
    m_headSize = encoder.encode(m_headText).size();
    m_head = head;
    const Reference<Block> block(new Block);
    for (const std::string_view text : {MANY, SAMPLE.text, std::string_view(), MANY}) {
        for (const std::int64_t sequence : {std::int64_t {0}, SAMPLE.sequence, std::int64_t {9'876'543'210}}) {
            Fields fields = printer.getSample(text);
            fields.sequence = sequence;
            std::string rest;
            block->cut(0);
            appendHead(*block, sequence);
            if (!appendRest(rest, fields, printer.getTime()))
                return false;
            block->append(rest);
            if (printer.print(fields) != block->view())
                return false;
        }
    }
    return true;
}

void Form::appendHead(Block& block, std::int64_t sequence) const
{
    char digits[std::numeric_limits<std::int64_t>::digits10 + 2] {};
    const char* const end = std::to_chars(digits, std::end(digits), sequence).ptr;
    const std::string_view number(digits, static_cast<std::size_t>(end - digits));
    block.append(m_head);
    if (m_encoding.empty())
        return block.append(number);
    for (const char digit : number)
        block.append(m_digits[static_cast<std::size_t>(digit - '0')]);
}

bool Form::appendRest(std::string& bytes, const Fields& fields, std::string_view time) const
{
    if (m_encoding.empty())
        return appendUtf8(bytes, fields, time);
    std::string text = m_headText;
    if (!appendUtf8(text, fields, time))
        return false;
    std::unique_ptr<Encoder> encoder;
    {
        const std::lock_guard lock(m_lock);
        if (!m_encoders.empty()) {
            encoder = std::move(m_encoders.back());
            m_encoders.pop_back();
        }
    }
    if (encoder == nullptr)
        encoder = std::make_unique<Encoder>(m_encoding, m_headText);
    try {
        bytes += encoder->encode(text).substr(m_headSize);
    } catch (const std::bad_alloc&) {
        throw;
    } catch (const vx::Exception&) { // the log reports what the writer says
        return false;
    }
    const std::lock_guard lock(m_lock);
    if (!m_isRetired)
        m_encoders.push_back(std::move(encoder));
    return true;
}

void Form::retire() const
{
    const std::lock_guard lock(m_lock);
    m_isRetired = true;
    m_encoders.clear();
}

bool Form::appendUtf8(std::string& bytes, const Fields& fields, std::string_view time) const
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
