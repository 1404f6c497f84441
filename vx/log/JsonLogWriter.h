#pragma once

#include "vx/log/AbstractLogWriter.h"

namespace vx::log {

namespace detail {
class Utf8Builder;
}

/// Writes each entry as a JSON object (RFC 8259) on one line, even if its values have several lines. The fields have
/// the same order as in the other forms.
///
/// Numbers of this library are written as numbers, a missing value as null, and everything else as text. The writer
/// must encode to UTF-8.
class VX_API JsonLogWriter : public AbstractLogWriter {
public:
    /// Holds a reference to `writer`.
    static Reference<ILogProcessor> create(io::Writer* writer);
    ~JsonLogWriter() noexcept(false) override;

protected:
    String format(const ILogEntry* entry) override;
    void print(const ILogEntry& entry, vx::detail::TextBuilder& text) override;

private:
    friend class detail::LogWriterFace;

    static void printUtf8(const ILogEntry& entry, detail::Utf8Builder& text);

    explicit JsonLogWriter(io::Writer* writer);
};

} // namespace vx::log
