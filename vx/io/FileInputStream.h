#pragma once

#include "vx/String.h"
#include "vx/io/InputStream.h"

#include <cstdint>

namespace vx::util {
class FilePath;
}

namespace vx::io {

/// Reads a file, or anything else that a system handle refers to. Each read is one system call, without a buffer.
/// Failures are ResultExceptions. One thread at a time.
class VX_API FileInputStream : public InputStream {
public:
    /// An owned handle is closed with the stream.
    FileInputStream(std::uint32_t handle, bool owned);
    explicit FileInputStream(const String& path);
    explicit FileInputStream(const util::FilePath& path);
    FileInputStream(const FileInputStream&) = delete;
    FileInputStream& operator=(const FileInputStream&) = delete;
    ~FileInputStream() noexcept(false) override;

    // InputStream
    using InputStream::read;
    /// Returns -1 for a `length` of 0.
    std::int32_t read(signed char* target, std::int32_t length) override;
    /// The handle is closed even if this fails.
    void close() override;

    /// `VX_FILE_INVALID_HANDLE` once closed.
    std::uint32_t getHandle();

private:
    static std::uint32_t openFile(const String& path);

    std::uint32_t m_handle;
    bool m_owned;
    String m_path; ///< for diagnostics; empty if the handle came from the caller
};

} // namespace vx::io
