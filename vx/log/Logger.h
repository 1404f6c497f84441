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

namespace detail {

/// The logger interfaces of `Logger`. It stands between them and the class so that their operations take no slots among
/// those of the class.
class VX_API LoggerFace : public ILogger, public ILevelLogger {
public:
    /// At the default level.
    void log(const String& text) override;
    /// Builds an entry with the fields that are on, and gives it to the processors. A disabled logger does nothing.
    void log(int level, const String& text) override;

protected:
    LoggerFace() = default;
    ~LoggerFace() = default;
};

} // namespace detail

/// Makes entries of texts. Each of the fields "sequence", "thread", "name", "timestamp", "level" and "text" can be on or
/// off; "level" and "text" are on at the start. What a processor throws reaches the caller of `log`.
///
/// @code
/// const Reference<io::StringWriter> out(new io::StringWriter);
/// const Reference<log::Logger> logger(new log::Logger(u"orders"));
/// logger->addProcessor(log::BasicLogWriter::create(out.get()).get());
/// logger->log(3, u"2 × coffee");
/// assert(out->toString().startsWith(u"level=3\ntext=2 × coffee\nname=orders\n---"));
/// @endcode
///
/// Several threads may log, and may switch fields, default level and logger meanwhile; processors are set before. Two
/// threads can see the same sequence number: put a `SyncLogger` in front, so that they do not.
class VX_API Logger : public Object, public detail::LoggerFace {
public:
    Logger();
    /// With the field "name" on.
    explicit Logger(const String& name);
    Logger(const Logger&) = delete;
    Logger& operator=(const Logger&) = delete;
    ~Logger() noexcept override;

    static Reference<Logger> create();
    static Reference<Logger> create(const String& name);
    /// Always empty: no processor has a name.
    static Reference<ILogProcessor> createProcessor(const String& name);

    VX_OBJECT_UNKNOWN(Object)

    /// In any case of letters. A name that is none of the six changes nothing.
    virtual void enableField(const String& name, bool enabled);

protected:
    /// For derived loggers, to add fields of their own to each entry. Empty here.
    virtual void addCustomFields(ILogEntry* entry);

public:
    using detail::LoggerFace::log;
    /// A logger is enabled at the start.
    void setEnabled(bool enabled);
    /// The level of texts that are logged without one; 0 at the start.
    void setDefaultLevel(int level);
    /// Processors see entries in the order of adding, and are counted.
    void addProcessor(ILogProcessor* processor);
    /// Drops all others.
    void setProcessor(ILogProcessor* processor);

protected:
    bool isEnabled() const;
    /// An entry with the fields that are on. It carries the sequence number that `log` counts next.
    Reference<ILogEntry> getLogEntry(int level, const String& text) const;
    /// Counts the sequence and gives the entry away, whether enabled or not.
    void log(const ILogEntry* entry);

private:
    friend class detail::LoggerFace;

    String m_name;
    std::atomic<bool> m_isEnabled {true};
    Reference<MultiProcessor> m_processor;
    std::atomic<int> m_defaultLevel {0};
    std::atomic<std::uint32_t> m_fields; ///< a bit for each of the six that is on
    std::atomic<std::int32_t> m_sequence {0};
};

} // namespace vx::log
