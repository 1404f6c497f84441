#pragma once

#include "vx/Reference.h"
#include "vx/io/Writer.h"

namespace vx::io {

/// Forwards every operation to another writer; the base of writers that transform data.
///
/// Holds a reference to the sink from construction to destruction. Without one, writing and flushing throw IoException
/// "stream closed", and `close` does nothing.
class VX_API FilterWriter : public Writer {
public:
    explicit FilterWriter(Writer* sink);
    FilterWriter(const FilterWriter&) = delete;
    FilterWriter& operator=(const FilterWriter&) = delete;

    // Writer
    void write(const String& text) override;
    void write(const char16_t* text) override;
    void write(const char16_t* text, std::int32_t length) override;
    void write(char16_t ch) override;
    void flush() override;
    void close() override;

protected:
    /// The wrapped writer. Throws IoException "stream closed" if there is none.
    Writer& sink() const;

private:
    Reference<Writer> m_sink;
};

} // namespace vx::io
