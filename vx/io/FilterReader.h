#pragma once

#include "vx/Reference.h"
#include "vx/io/Reader.h"

namespace vx::io {

/// Forwards every operation to another reader; the base of readers that transform data.
///
/// Holds a reference to the source from construction to destruction. Without one, reading and marking throw IoException
/// "stream closed", and `close` does nothing.
class VX_API FilterReader : public Reader {
public:
    explicit FilterReader(Reader* source);
    FilterReader(const FilterReader&) = delete;
    FilterReader& operator=(const FilterReader&) = delete;

    // Reader
    std::int32_t read(char16_t* target, std::int32_t length) override;
    int read() override;
    std::int32_t skip(std::int32_t count) override;
    std::int32_t available() override;
    void close() override;
    bool markSupported() override;
    void mark(std::int32_t limit) override;
    void reset() override;

protected:
    /// The wrapped reader. Throws IoException "stream closed" if there is none.
    Reader& source() const;

private:
    Reference<Reader> m_source;
};

} // namespace vx::io
