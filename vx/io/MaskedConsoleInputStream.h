#pragma once

#include "vx/io/InputStream.h"

namespace vx::io {

/// Keys from the console, for passwords: nothing at all shows on the screen, and each read restores the terminal.
/// Where standard input is no terminal, its bytes are read as they are. What a `StdioInputStream` has read ahead comes
/// first. One thread at a time.
class VX_API MaskedConsoleInputStream : public InputStream {
public:
    // InputStream
    using InputStream::read;
    /// Waits for keys up to a line end, which comes as the one byte 10. Backspace takes back the last key, all its bytes in
    /// UTF-8; Ctrl-Z ends the read, -1 when nothing came before; Ctrl-C throws UserAbortException.
    std::int32_t read(signed char* target, std::int32_t length) override;
};

} // namespace vx::io
