#pragma once

#include "Messages.h"

#include <cstdint>
#include <string>

namespace vxtools {

/// What is read: a file, or standard input for "-".
class Input {
public:
    explicit Input(const std::string& path);
    ~Input();
    Input(const Input&) = delete;
    Input& operator=(const Input&) = delete;

    int descriptor() const noexcept { return m_descriptor; }
    /// For messages.
    const Text& name() const noexcept { return m_name; }
    /// In bytes; -1 where nobody knows before the end.
    std::int64_t size() const noexcept { return m_size; }

private:
    explicit Input(Text name);

    Text m_name;
    int m_descriptor = 0;
    std::int64_t m_size = -1;
};

/// `open`, which a signal does not end. -1 with `errno`.
int openFile(const char* path, int flags, unsigned int mode = 0);

/// Keeps the numbers of the standard streams from the files that are opened later.
void occupyStandardStreams();

} // namespace vxtools
