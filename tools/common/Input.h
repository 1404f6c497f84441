#pragma once

#include "Messages.h"

#include <cstdint>
#include <string>

namespace vxtools {

/// The input of a program: a file, or standard input for "-".
class Input {
public:
    explicit Input(const std::string& path);
    ~Input();
    Input(const Input&) = delete;
    Input& operator=(const Input&) = delete;

    int descriptor() const noexcept { return m_descriptor; }
    /// The name for messages.
    const Text& name() const noexcept { return m_name; }
    /// In bytes; -1 if it is not known before the end.
    std::int64_t size() const noexcept { return m_size; }

private:
    explicit Input(Text name);

    Text m_name;
    int m_descriptor = 0;
    std::int64_t m_size = -1;
};

/// Calls `open`, again after a signal. -1 with `errno` set if it fails.
int openFile(const char* path, int flags, unsigned int mode = 0);

/// Throws Failure if this standard stream, 0 or 1, was closed when the program began.
void requireStream(int descriptor);

/// Opens closed standard streams, so that no file that is opened later gets their descriptors.
void occupyStandardStreams();

} // namespace vxtools
