#pragma once

#include "vx/Reference.h"
#include "vx/io/OutputStream.h"

namespace vx::io {

/// Forwards every operation to another stream; the base of streams that transform data.
///
/// Holds a reference to the sink from construction to destruction. Without one, writing and flushing throw IoException
/// "stream closed", and `close` does nothing.
class VX_API FilterOutputStream : public OutputStream {
public:
    explicit FilterOutputStream(OutputStream* sink);
    FilterOutputStream(const FilterOutputStream&) = delete;
    FilterOutputStream& operator=(const FilterOutputStream&) = delete;

    // OutputStream
    using OutputStream::write;
    void write(const signed char* bytes, std::int32_t length) override;
    void write(signed char byte) override;
    void flush() override;
    void close() override;

protected:
    /// The wrapped stream. Throws IoException "stream closed" if there is none.
    OutputStream& sink() const;

private:
    Reference<OutputStream> m_sink;
};

} // namespace vx::io
