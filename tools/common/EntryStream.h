#pragma once

#include <vx/Reference.h>
#include <vx/io/FileOutputStream.h>

#include <vector>

namespace vxtools {

/// Gathers the bytes of an entry, however many there are, and gives them to the file in one write when it is flushed: the
/// entries of several processes do not mix, and one that does not fit on the disk leaves no part of it.
class EntryStream : public vx::io::OutputStream {
public:
    explicit EntryStream(vx::io::FileOutputStream* file);

    // OutputStream
    using OutputStream::write;
    void write(const signed char* bytes, std::int32_t length) override;
    /// The bytes are gone from here also when the file cannot take them.
    void flush() override;

private:
    vx::Reference<vx::io::FileOutputStream> m_file;
    std::vector<signed char> m_entry;
};

} // namespace vxtools
