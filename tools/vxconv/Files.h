#pragma once

#include "common/Input.h"

#include <string>

namespace vxconv {

using vxtools::Input;

/// The output: standard output for "-", a device or pipe directly, otherwise a new file that replaces the old one when
/// it is complete.
///
/// `commit` gives the file its name. Until then the name refers to the old file, however the program ends. If the file
/// system supports it, the new file has no name before `commit`, so that even a killed program leaves nothing.
/// Otherwise it has a temporary name in the folder of the old file, and this object or the signal handler removes it.
/// The new file gets the rights of the file that it replaces. A symbolic link stays, and its target is replaced.
class Output {
public:
    Output(const std::string& path, const Input& input);
    ~Output();
    Output(const Output&) = delete;
    Output& operator=(const Output&) = delete;

    int descriptor() const noexcept { return m_descriptor; }
    const vxtools::Text& name() const noexcept { return m_name; }

    void commit();

private:
    explicit Output(vxtools::Text name);

    void openBeside(const std::string& path);
    void close();

    vxtools::Text m_name;
    std::string m_target; ///< empty: written directly
    std::string m_beside; ///< the pattern of the temporary name of the new file
    bool m_isUnnamed = false;
    int m_descriptor = 1;
};

} // namespace vxconv
