#pragma once

#include <cstdint>
#include <string>

namespace vxconv {

/// What is read: a file, or standard input for "-".
class Input {
public:
    explicit Input(const std::string& path);
    ~Input();
    Input(const Input&) = delete;
    Input& operator=(const Input&) = delete;

    int descriptor() const noexcept { return m_descriptor; }
    /// For messages.
    const std::string& name() const noexcept { return m_name; }
    /// In bytes; -1 where nobody knows before the end.
    std::int64_t size() const noexcept { return m_size; }

private:
    std::string m_name;
    int m_descriptor = 0;
    std::int64_t m_size = -1;
};

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

/// Keeps the numbers of the standard streams from the files that are opened later.
void occupyStandardStreams();

} // namespace vxconv
