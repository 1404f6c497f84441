#pragma once

#include "common/Input.h"

#include <string>

namespace vxconv {

using vxtools::Input;

/// What is written: standard output for "-", a device or pipe as it is, and a new file that takes the place of the old one
/// when it is whole.
///
/// `commit` gives the file its name. Before that the name means the old file, however the program ends. The new file has no
/// name until then where the file system can do that, so that even a kill leaves nothing of it; elsewhere it has one beside
/// the old file, which this object removes, or the signal that ends the program. It gets the rights of the file that it
/// replaces; a symbolic link stays, and its target is replaced.
class Output {
public:
    Output(const std::string& path, const Input& input);
    ~Output();
    Output(const Output&) = delete;
    Output& operator=(const Output&) = delete;

    int descriptor() const noexcept { return m_descriptor; }
    const std::string& name() const noexcept { return m_name; }

    void commit();

private:
    explicit Output(std::string name);

    void openBeside(const std::string& path);
    void close();

    std::string m_name;
    std::string m_target; ///< empty: written as it is
    std::string m_beside; ///< the pattern of the name that the new file has, or gets just before it is in place
    bool m_isUnnamed = false;
    int m_descriptor = 1;
};

} // namespace vxconv
