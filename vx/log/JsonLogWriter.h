#pragma once

#include "vx/log/AbstractLogWriter.h"

namespace vx::log {

/// Writes an entry as an object of JSON (RFC 8259) on a line of its own, however many lines its values have. The fields
/// come in the same order as in the other forms.
///
/// A number of this library is a number, a missing value is null, and all else is text. The writer has to encode to
/// UTF-8.
class VX_API JsonLogWriter : public AbstractLogWriter {
public:
    /// Holds a reference to `writer`.
    static Reference<ILogProcessor> create(io::Writer* writer);
    ~JsonLogWriter() noexcept(false) override;

protected:
    String format(const ILogEntry* entry) override;
    void print(const ILogEntry& entry, vx::detail::TextBuilder& text) override;

private:
    explicit JsonLogWriter(io::Writer* writer);
};

} // namespace vx::log
