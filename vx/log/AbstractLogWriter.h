#pragma once

#include "vx/Object.h"
#include "vx/Reference.h"
#include "vx/io/Writer.h"
#include "vx/log/ILogProcessor.h"

namespace vx::log {

class AbstractLogWriter;

namespace detail {

class EntryText;

/// The processor interface of `AbstractLogWriter`, apart from it so that the operation takes no slot among the class's.
class VX_API LogWriterFace : public ILogProcessor {
public:
    /// One write of the formatted entry, then a flush: the log is complete after each entry. Half of a surrogate pair, which
    /// no encoding takes, becomes U+FFFD. Failures are those of the writer.
    void process(const ILogEntry* entry) override;

protected:
    LogWriterFace() = default;
    ~LogWriterFace() = default;
};

} // namespace detail

/// Ends a chain: writes each entry as text. Nothing is locked.
class VX_API AbstractLogWriter : public Object, public detail::LogWriterFace {
public:
    ~AbstractLogWriter() noexcept(false) override;

    VX_OBJECT_UNKNOWN(Object)

    /// That of the writer.
    virtual void flush();

protected:
    /// The whole text of an entry, line ends included.
    virtual String format(const ILogEntry* entry) = 0;

    /// The writer is counted as long as this object lives.
    explicit AbstractLogWriter(io::Writer* writer);
    /// Appends what `format` gives.
    using Print = void (*)(const AbstractLogWriter& self, const ILogEntry& entry, detail::EntryText& text);
    /// For a class whose `format` nobody overrides: its entries take no String.
    AbstractLogWriter(io::Writer* writer, Print print);
    /// `format` by `print`.
    String formatByPrint(const ILogEntry* entry) const;

    io::Writer& getWriter() const noexcept { return *m_writer; }

private:
    friend class detail::LogWriterFace;

    Reference<io::Writer> m_writer;
    const Print m_print = nullptr;
};

} // namespace vx::log
