#pragma once

#include "Messages.h"

#include <string>
#include <string_view>

namespace vxtools {

/// Writes all bytes, again after a signal or a short write. False with `errno` set if it fails.
bool writeAll(int descriptor, std::string_view bytes);

/// The output of a program: standard output for "-", a device or pipe directly, otherwise a new file that replaces the old one when
/// it is complete.
///
/// `commit` gives the file its name. Until then the name refers to the old file, however the program ends. A file that
/// replaces another one is on the disk before that, so that even a power failure leaves one of them whole. If the file
/// system supports it, the new file has no name before `commit`, so that even a killed program leaves nothing.
/// Otherwise it has a temporary name in the folder of the old file, and this object or the signal handler removes it.
/// The new file gets the rights of the file that it replaces. A symbolic link stays, and its target is replaced.
class Output {
public:
    explicit Output(const std::string& path);
    ~Output();
    Output(const Output&) = delete;
    Output& operator=(const Output&) = delete;

    int descriptor() const noexcept { return m_descriptor; }
    const Text& name() const noexcept { return m_name; }

    /// Throws Failure.
    void write(std::string_view bytes);
    /// Throws Failure.
    void commit();

private:
    explicit Output(Text name);

    void openBeside(const std::string& path);
    void close();

    Text m_name;
    std::string m_target; ///< empty: written directly
    std::string m_beside; ///< the pattern of the temporary name of the new file
    bool m_isUnnamed = false;
    bool m_replaces = false;
    int m_descriptor = 1;
};

} // namespace vxtools
