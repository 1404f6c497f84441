#pragma once

#include "vx/io/InputStream.h"

namespace vx::io {

/// Reads keys from the console without showing them, for passwords. Each read restores the terminal. If standard input
/// is not a terminal, its bytes are read unchanged. Bytes that a `StdioInputStream` has buffered come first. One thread
/// at a time.
class VX_API MaskedConsoleInputStream : public InputStream {
public:
    // InputStream
    using InputStream::read;
    /// Waits for keys up to a line end, which is returned as the single byte 10. Backspace removes the last key with
    /// all its UTF-8 bytes; Ctrl-Z ends the read, with -1 if there was no key before; Ctrl-C throws UserAbortException.
    std::int32_t read(signed char* target, std::int32_t length) override;
};

} // namespace vx::io
