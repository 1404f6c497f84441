#include "vx/io/PrintWriter.h"

namespace vx::io {

PrintWriter::PrintWriter(Writer* sink, bool autoFlush)
    : FilterWriter(sink)
    , m_autoFlush(autoFlush)
{
}

// Each type of values, and what is written of one.
#define VX_PRINT(Value, written)                                                                                       \
    void PrintWriter::print(Value value)                                                                               \
    {                                                                                                                  \
        write(written);                                                                                                \
    }                                                                                                                  \
                                                                                                                       \
    void PrintWriter::println(Value value)                                                                             \
    {                                                                                                                  \
        print(value);                                                                                                  \
        newLine();                                                                                                     \
    }

VX_PRINT(const String&, value)
VX_PRINT(const char*, String(value, -1, nullptr, 0))
VX_PRINT(const char16_t*, value)
VX_PRINT(double, String::valueOf(value))
VX_PRINT(float, String::valueOf(value))
VX_PRINT(long, String::valueOf(value))
VX_PRINT(int, String::valueOf(value))
VX_PRINT(char16_t, value)
VX_PRINT(bool, String::valueOf(value))

void PrintWriter::println()
{
    newLine();
}

void PrintWriter::newLine()
{
    write(char16_t {10});
    if (m_autoFlush)
        flush();
}

} // namespace vx::io
