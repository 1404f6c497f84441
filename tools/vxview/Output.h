#pragma once

#include <string>
#include <string_view>
#include <sys/types.h>

namespace vxview {

/// The reader of the output wants no more of it.
struct OutputClosed { };

/// Standard output: with a buffer, and through a pager if it is a terminal and the user wants that.
class Output {
public:
    explicit Output(bool hasPager);
    /// Drops what has not been flushed, and waits until the user leaves the pager.
    ~Output();
    Output(const Output&) = delete;
    Output& operator=(const Output&) = delete;

    /// Throws as `flush` does.
    void write(std::string_view text)
    {
        m_buffer += text;
        if (m_buffer.size() >= BLOCK_SIZE)
            flush();
    }
    /// Throws OutputClosed, or Failure for any other fault.
    void flush();

private:
    static constexpr std::size_t BLOCK_SIZE = 64 * 1024;

    void startPager();

    std::string m_buffer;
    int m_file;
    pid_t m_pager = -1;
};

} // namespace vxview
