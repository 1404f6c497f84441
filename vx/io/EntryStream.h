#pragma once

#include "vx/Reference.h"
#include "vx/io/OutputStream.h"
#include "vxsys/Memory.h"

#include <cstdint>
#include <vector>

namespace vx::io {

/// Writes each entry with one call, however long it is: collects what is written and passes it to the wrapped stream at
/// the flush. Over a `FileOutputStream` in APPEND mode the entries of several processes never mix, and an entry that ends
/// with a line feed begins on a new line (`FileOutputStream::writeLine`), as with a `RotatingFileStream`.
///
/// If the wrapped stream fails, the entry is kept until the next call: `flush` tries again, `write` drops it and begins
/// the next entry. Neither `close` nor the destructor flushes. One thread at a time.
class VX_API EntryStream : public OutputStream {
public:
    /// Holds a reference to `sink`. Without `flushesSink` a flush ends the entry and does not flush the wrapped stream:
    /// flushing a file to the disk costs far more than writing to it.
    explicit EntryStream(OutputStream* sink, bool flushesSink = true);
    EntryStream(const EntryStream&) = delete;
    EntryStream& operator=(const EntryStream&) = delete;
    ~EntryStream() override;

    // OutputStream
    using OutputStream::write;
    /// Throws OutOfMemoryException for an entry of 2^31 bytes or more.
    void write(const signed char* bytes, std::int32_t length) override;
    void flush() override;
    /// Closes the wrapped stream.
    void close() override;

    /// Drops the last `count` bytes of the entry, all of it if there are fewer: for a writer that cannot encode the
    /// rest of a text.
    void takeBack(std::int64_t count);

private:
    Reference<OutputStream> m_sink;
    const bool m_flushesSink;
    std::vector<signed char, vxsys::Allocator<signed char>> m_entry;
    bool m_isRefused = false; ///< the wrapped stream threw at `m_entry`
};

} // namespace vx::io
