#pragma once

#include "vx/Object.h"
#include "vx/Reference.h"
#include "vx/String.h"
#include "vx/log/ILevelLogger.h"
#include "vx/log/ILogger.h"
#include "vx/log/MultiProcessor.h"

#include <atomic>
#include <cstdint>

namespace vx::log {

class Logger;
class ILogEntry;
class LogEntry;

namespace detail {

/// The logger interfaces of `Logger`. A separate base, so that their operations take no virtual table slots among those
/// of the class.
class VX_API LoggerFace : public ILogger, public ILevelLogger {
public:
    /// Logs at the default level.
    void log(const String& text) override;
    /// Builds an entry with the enabled fields and passes it to the processors. A disabled logger does nothing.
    void log(int level, const String& text) override;

protected:
    LoggerFace() = default;
    ~LoggerFace() = default;
};

} // namespace detail

/// Makes entries of texts. Each of the fields "sequence", "thread", "name", "timestamp", "level" and "text" can be
/// enabled; at first "level" and "text" are. An exception of a processor reaches the caller of `log`.
///
/// @code
/// const Reference<io::StringWriter> out(new io::StringWriter);
/// const Reference<log::Logger> logger(new log::Logger(u"orders"));
/// logger->addProcessor(log::BasicLogWriter::create(out.get()).get());
/// logger->log(3, u"2 × coffee");
/// assert(out->toString().startsWith(u"level=3\ntext=2 × coffee\nname=orders\n---"));
/// @endcode
///
/// Several threads may log at the same time, and may change the fields, the times, the default level and whether the logger is
/// enabled. Set the processors before. Two threads can get the same sequence number; a `SyncLogger` around this logger
/// prevents that.
class VX_API Logger : public Object, public detail::LoggerFace {
public:
    Logger();
    /// Enables the field "name".
    explicit Logger(const String& name);
    Logger(const Logger&) = delete;
    Logger& operator=(const Logger&) = delete;
    ~Logger() noexcept override;

    static Reference<Logger> create();
    static Reference<Logger> create(const String& name);
    /// Always empty: no processor has a name.
    static Reference<ILogProcessor> createProcessor(const String& name);

    VX_OBJECT_UNKNOWN(Object)

    /// Names are case-insensitive. A name that is none of the six changes nothing.
    virtual void enableField(const String& name, bool enabled);

protected:
    /// For derived loggers, to add more fields to each entry. Does nothing here.
    virtual void addCustomFields(ILogEntry* entry);

public:
    using detail::LoggerFace::log;
    /// A new logger is enabled.
    void setEnabled(bool enabled);
    /// The level of texts that are logged without one; 0 at first.
    void setDefaultLevel(int level);
    /// How the field "timestamp" is written.
    enum class Times {
        AS_THE_LOCALE_WRITES, ///< without milliseconds and zone; at first
        RFC_3339, ///< local time: 2026-11-19T02:58:01.123+01:00
        RFC_3339_UTC ///< 2026-11-19T01:58:01.123Z
    };
    void setTimes(Times times);
    /// Adds a reference to the processor. Processors get each entry in the order in which they were added.
    void addProcessor(ILogProcessor* processor);
    /// Removes all other processors.
    void setProcessor(ILogProcessor* processor);

protected:
    bool isEnabled() const;
    /// An entry with the enabled fields. Its sequence number is the one that the next `log` uses.
    Reference<ILogEntry> getLogEntry(int level, const String& text) const;
    /// Increments the sequence number and passes the entry to the processors, whether the logger is enabled or not.
    void log(const ILogEntry* entry);

private:
    friend class detail::LoggerFace;

    Reference<LogEntry> makeEntry(int level, const String& text) const;

    String m_name;
    std::atomic<bool> m_isEnabled {true};
    Reference<MultiProcessor> m_processor;
    std::atomic<int> m_defaultLevel {0};
    std::atomic<std::uint32_t> m_fields; ///< a bit for each of the six that is enabled
    std::atomic<std::int32_t> m_sequence {0};
    std::atomic<Times> m_times {Times::AS_THE_LOCALE_WRITES};
};

} // namespace vx::log
