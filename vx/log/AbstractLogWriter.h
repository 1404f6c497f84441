#pragma once

#include "vx/Object.h"
#include "vx/Reference.h"
#include "vx/io/Writer.h"
#include "vx/log/ILogProcessor.h"

namespace vx::detail {
class TextBuilder;
}

namespace vx::log {

class AbstractLogWriter;
class BasicLogWriter;
class XmlLogWriter;

namespace detail {

/// The processor interface of `AbstractLogWriter`. It stands between the two so that its operations take no slots among those
/// of the class.
class VX_API LogWriterFace : public ILogProcessor {
public:
    /// One write of the formatted entry, then a flush: the log is complete after each entry. Half of a surrogate pair, which
    /// no encoding takes, becomes U+FFFD. Failures are those of the writer.
    void process(const ILogEntry* entry) override;

protected:
    LogWriterFace() = default;
    ~LogWriterFace() = default;

    /// Appends the text of the entry: what `format` gives. A writer that overrides this needs no String for an entry.
    virtual void print(const ILogEntry& entry, vx::detail::TextBuilder& text);
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
    /// The whole text of an entry, line ends included. The body here, for writers that override `print`, gives what that
    /// appends.
    virtual String format(const ILogEntry* entry) = 0;

    /// Holds a reference to the writer as long as this object lives.
    explicit AbstractLogWriter(io::Writer* writer);

    io::Writer& getWriter() const noexcept { return *m_writer; }

private:
    friend class detail::LogWriterFace;
    friend class BasicLogWriter;
    friend class XmlLogWriter;

    Reference<io::Writer> m_writer;
    bool m_replacesHalves = false; ///< whether `print` itself replaces halves of surrogate pairs
};

} // namespace vx::log
