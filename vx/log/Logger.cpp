#include "vx/log/Logger.h"

#include "vx/NumberBoxes.h"
#include "vx/exec/Thread.h"
#include "vx/log/LogEntry.h"
#include "vx/log/TimeStamp.h"

namespace vx::log {

constexpr STRUCT_VX_STR_LIT_INFO Logger::FIELD_NAMES[] = {literal(u"sequence"), literal(u"thread"), literal(u"name"),
    literal(u"timestamp"), literal(u"level"), literal(u"text")};

namespace detail {

void LoggerFace::log(const String& text)
{
    log(static_cast<Logger&>(*this).m_defaultLevel, text);
}

void LoggerFace::log(int level, const String& text)
{
    auto& logger = static_cast<Logger&>(*this);
    if (!logger.m_isEnabled)
        return;
    const Reference<ILogEntry> entry = logger.getLogEntry(level, text);
    logger.addCustomFields(entry.get());
    logger.log(entry.get());
}

} // namespace detail

Logger::Logger()
    : m_processor(MultiProcessor::create())
{
    for (std::size_t field = 0; field < FIELD_COUNT; ++field)
        m_fieldNames[field] = String(FIELD_NAMES[field]);
    m_fields[LEVEL] = true;
    m_fields[TEXT] = true;
}

Logger::Logger(const String& name)
    : Logger()
{
    m_name = name;
    m_fields[NAME] = true;
}

Logger::~Logger() noexcept = default;

Reference<Logger> Logger::create()
{
    return new Logger;
}

Reference<Logger> Logger::create(const String& name)
{
    return new Logger(name);
}

Reference<ILogProcessor> Logger::createProcessor(const String&)
{
    return nullptr;
}

void Logger::enableField(const String& name, bool enabled)
{
    for (int field = 0; field < FIELD_COUNT; ++field) {
        if (name.equals(FIELD_NAMES[field].text, true))
            m_fields[static_cast<std::size_t>(field)] = enabled;
    }
}

void Logger::addCustomFields(ILogEntry*) { }

void Logger::setEnabled(bool enabled)
{
    m_isEnabled = enabled;
}

void Logger::setDefaultLevel(int level)
{
    m_defaultLevel = level;
}

void Logger::addProcessor(ILogProcessor* processor)
{
    m_processor->addProcessor(processor);
}

void Logger::setProcessor(ILogProcessor* processor)
{
    const Reference<MultiProcessor> alone = MultiProcessor::create();
    alone->addProcessor(processor);
    m_processor = alone;
}

bool Logger::isEnabled() const
{
    return m_isEnabled;
}

Reference<ILogEntry> Logger::getLogEntry(int level, const String& text) const
{
    static_assert(FIELD_COUNT <= LogEntry::FEW);
    Reference<LogEntry> entry = LogEntry::create();
    const auto set = [&](Field field, auto makeValue) {
        if (m_fields[field])
            entry->append(m_fieldNames[field], Reference<Object>(makeValue()));
    };
    set(LEVEL, [&] { return new Integer32(level); });
    set(TEXT, [&] { return new String(text); });
    set(SEQUENCE, [&] { return new Integer32(m_sequence.load(std::memory_order_relaxed)); });
    set(THREAD, [] { return new UInteger32(exec::Thread::getCurrentID()); });
    set(TIMESTAMP, [] { return new TimeStamp(true); });
    set(NAME, [&] { return new String(m_name); });
    Reference<ILogEntry> result;
    result.attach(entry.detach());
    return result;
}

void Logger::log(const ILogEntry* entry)
{
    m_sequence.fetch_add(1, std::memory_order_relaxed);
    const Reference<MultiProcessor> processor = m_processor; // a processor may replace it
    processor->process(entry);
}

} // namespace vx::log
