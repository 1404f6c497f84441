#pragma once

#include "vx/Reference.h"
#include "vx/io/InputStream.h"

namespace vx::io {

/// Forwards every operation to another stream; the base of streams that transform data.
///
/// Holds a reference to the source from construction to destruction. Without one, reading and marking throw IoException
/// "stream closed", and `close` does nothing.
class VX_API FilterInputStream : public InputStream {
public:
    explicit FilterInputStream(InputStream* source);
    FilterInputStream(const FilterInputStream&) = delete;
    FilterInputStream& operator=(const FilterInputStream&) = delete;

    // InputStream
    using InputStream::read;
    std::int32_t read(signed char* target, std::int32_t length) override;
    int read() override;
    std::int32_t skip(std::int32_t count) override;
    std::int32_t available() override;
    void close() override;
    bool markSupported() override;
    void mark(std::int32_t limit) override;
    void reset() override;

protected:
    /// The wrapped stream. Throws IoException "stream closed" if there is none.
    InputStream& source() const;

private:
    Reference<InputStream> m_source;
};

} // namespace vx::io
