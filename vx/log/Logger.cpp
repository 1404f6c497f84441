#include "vx/log/Logger.h"

#include "vx/Exception.h"
#include "vx/exec/Thread.h"
#include "vx/log/LogEntry.h"

namespace vx::log {

namespace detail {

void LoggerFace::log(const String& text)
{
    log(static_cast<Logger&>(*this).m_defaultLevel.load(std::memory_order_relaxed), text);
}

void LoggerFace::log(int level, const String& text)
{
    auto& logger = static_cast<Logger&>(*this);
    if (!logger.isEnabled())
        return;
    Reference<LogEntry> entry = logger.makeEntry(level, text);
    logger.addCustomFields(entry.get());
    logger.log(entry.get());
    entry.detach()->releaseHeld();
}

} // namespace detail

Logger::Logger()
    : m_processor(MultiProcessor::create())
    , m_fields(1U << LogEntry::LEVEL | 1U << LogEntry::TEXT)
{
}

Logger::Logger(const String& name)
    : Logger()
{
    m_name = name;
    m_fields |= 1U << LogEntry::NAME;
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
    std::uint32_t bit = 1;
    for (const LogEntry::LoggerFieldRow& field : LogEntry::LOGGER_FIELDS) {
        if (name.equals(field.name, true))
            enabled ? m_fields.fetch_or(bit) : m_fields.fetch_and(~bit);
        bit <<= 1;
    }
}

void Logger::addCustomFields(ILogEntry*) { }

void Logger::setEnabled(bool enabled)
{
    m_isEnabled.store(enabled, std::memory_order_relaxed);
}

void Logger::setDefaultLevel(int level)
{
    m_defaultLevel.store(level, std::memory_order_relaxed);
}

void Logger::setTimes(Times times)
{
    m_times.store(times, std::memory_order_relaxed);
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
    return m_isEnabled.load(std::memory_order_relaxed);
}

Reference<ILogEntry> Logger::getLogEntry(int level, const String& text) const
{
    Reference<ILogEntry> result;
    result.attach(makeEntry(level, text).detach());
    return result;
}

Reference<LogEntry> Logger::makeEntry(int level, const String& text) const
{
    const std::uint32_t fields = m_fields.load(std::memory_order_relaxed);
    const auto has = [fields](LogEntry::LoggerField field) { return (fields >> field & 1) != 0; };
    Reference<LogEntry> entry = LogEntry::create();
    if (has(LogEntry::LEVEL))
        entry->add(LogEntry::LEVEL, std::int32_t {level});
    if (has(LogEntry::TEXT))
        entry->addText(LogEntry::TEXT, text);
    if (has(LogEntry::SEQUENCE))
        entry->add(LogEntry::SEQUENCE, m_sequence.load(std::memory_order_relaxed));
    if (has(LogEntry::THREAD))
        entry->add(LogEntry::THREAD, exec::Thread::getCurrentID());
    if (has(LogEntry::TIMESTAMP)) {
        const Times times = m_times.load(std::memory_order_relaxed);
        if (times == Times::AS_THE_LOCALE_WRITES) { // written in place: numbers that were just written are slow to copy
            LogEntry::Field& stamp = entry->add(LogEntry::TIMESTAMP, STRUCT_VX_TIME {});
            throwIfFailed(VXTimeGetLocal(std::get_if<STRUCT_VX_TIME>(&stamp.plain)));
        } else {
            entry->add(LogEntry::TIMESTAMP, ZonedTime::now(times == Times::RFC_3339));
        }
    }
    if (has(LogEntry::NAME))
        entry->addText(LogEntry::NAME, m_name);
    return entry;
}

void Logger::log(const ILogEntry* entry)
{
    m_sequence.fetch_add(1, std::memory_order_relaxed);
    const Reference<MultiProcessor> processor = m_processor; // a processor may replace it
    processor->process(entry);
}

} // namespace vx::log
