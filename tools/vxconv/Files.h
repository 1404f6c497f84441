#pragma once

#include "common/Input.h"

#include <string>

namespace vxconv {

using vxtools::Input;

/// What is written: standard output for "-", a device or pipe as it is, and a file beside its place until it is whole.
///
/// `commit` gives the file its name. Before that the name stands for what it stood for, however the program ends, and the
/// file beside it goes with this object, or with the signal that ends the program. It gets the rights of the file that it
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
    void openBeside(const std::string& path);
    void close();

    std::string m_name;
    std::string m_target; ///< empty: written as it is
    int m_descriptor = 1;
};

} // namespace vxconv
