#pragma once

#include "vx/Reference.h"
#include "vx/io/OutputStream.h"
#include "vxsys/Memory.h"

#include <cstdint>
#include <vector>

namespace vx::io {

/// Makes one write out of an entry, however long it is: gathers what is written, and passes it to the stream below at the
/// flush. Over a `FileOutputStream` in APPEND mode the entries of several processes never mix.
///
/// An entry that the stream below refused is kept until the next call: `flush` tries again, `write` drops it and begins the
/// next entry. Neither `close` nor the destructor flushes. One thread at a time.
class VX_API EntryStream : public OutputStream {
public:
    /// Holds a reference to `sink`. Without `flushesSink` a flush ends the entry and leaves the stream below unflushed:
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
    /// Closes the stream below.
    void close() override;

    /// Drops the last `count` bytes of the entry, all of it if there are fewer: for a writer that finds out in the middle
    /// of a text that it cannot encode the rest.
    void takeBack(std::int64_t count);

private:
    Reference<OutputStream> m_sink;
    const bool m_flushesSink;
    std::vector<signed char, vxsys::Allocator<signed char>> m_entry;
    bool m_isRefused = false; ///< the stream below threw at `m_entry`
};

} // namespace vx::io
