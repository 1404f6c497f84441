#pragma once

#include "vx/log/AbstractLogWriter.h"

namespace vx::log {

/// Writes an entry as lines "name=value" and a line of 25 hyphens. Values are written unchanged, also line ends in
/// them.
class VX_API BasicLogWriter : public AbstractLogWriter {
public:
    /// Holds a reference to `writer`.
    static Reference<ILogProcessor> create(io::Writer* writer);
    ~BasicLogWriter() noexcept(false) override;

protected:
    String format(const ILogEntry* entry) override;
    void print(const ILogEntry& entry, vx::detail::TextBuilder& text) override;

private:
    explicit BasicLogWriter(io::Writer* writer);
};

} // namespace vx::log
