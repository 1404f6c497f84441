#pragma once

#include "vx/Object.h"
#include "vx/Reference.h"
#include "vx/io/Writer.h"
#include "vx/log/ILogProcessor.h"

#include <cstdint>

namespace vx::detail {
class TextBuilder;
}

namespace vx::log {

class AbstractLogWriter;
class BasicLogWriter;
class JsonLogWriter;
class XmlLogWriter;

namespace detail {

/// The processor interface of `AbstractLogWriter`. A separate base, so that its operations take no virtual table slots
/// among those of the class.
class VX_API LogWriterFace : public ILogProcessor {
public:
    /// Writes the formatted entry in one call and flushes, so that the log is complete after each entry. A lone half of
    /// a surrogate pair, which no encoding accepts, becomes U+FFFD. Throws what the writer throws.
    void process(const ILogEntry* entry) override;

protected:
    LogWriterFace() = default;
    ~LogWriterFace() = default;

    /// Appends the text that `format` returns. A writer that overrides this creates no String for each entry.
    virtual void print(const ILogEntry& entry, vx::detail::TextBuilder& text);

private:
    /// Prints directly to an OutputStreamWriter for UTF-8. False, and nothing is written, if that is not possible.
    bool writeUtf8(const ILogEntry& entry);
};

} // namespace detail

/// The end of a chain: writes each entry as text. Takes no lock.
class VX_API AbstractLogWriter : public Object, public detail::LogWriterFace {
public:
    ~AbstractLogWriter() noexcept(false) override;

    VX_OBJECT_UNKNOWN(Object)

    /// Flushes the writer.
    virtual void flush();

protected:
    /// The whole text of an entry, line ends included. By default what `print` appends, for writers that override
    /// `print`.
    virtual String format(const ILogEntry* entry) = 0;

    /// Holds a reference to the writer as long as this object lives.
    explicit AbstractLogWriter(io::Writer* writer);

    io::Writer& getWriter() const noexcept { return *m_writer; }

private:
    friend class detail::LogWriterFace;
    friend class BasicLogWriter;
    friend class JsonLogWriter;
    friend class XmlLogWriter;

    Reference<io::Writer> m_writer;
    /// The form of a writer of this library, whose `print` replaces halves of surrogate pairs and which has no derived
    /// class.
    enum class Form : std::uint8_t { OTHER, LINES, XML, JSON };
    Form m_form = Form::OTHER;
};

} // namespace vx::log
