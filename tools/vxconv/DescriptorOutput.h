#pragma once

#include <vx/io/OutputStream.h>

namespace vxconv {

/// Writes to a descriptor, which stays its opener's. Failures are ResultExceptions.
class DescriptorOutput : public vx::io::OutputStream {
public:
    explicit DescriptorOutput(int descriptor)
        : m_descriptor(descriptor)
    {
    }

    // OutputStream
    using OutputStream::write;
    void write(const signed char* bytes, std::int32_t length) override;
    /// To the disk, where there is one.
    void flush() override;

private:
    int m_descriptor;
};

} // namespace vxconv
