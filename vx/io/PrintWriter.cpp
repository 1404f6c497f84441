#include "vx/io/PrintWriter.h"

namespace vx::io {

PrintWriter::PrintWriter(Writer* sink, bool autoFlush)
    : FilterWriter(sink)
    , m_autoFlush(autoFlush)
{
}

void PrintWriter::print(const String& text)
{
    write(text);
}

void PrintWriter::print(const char* text)
{
    write(String(text, -1, nullptr, 0));
}

void PrintWriter::print(const char16_t* text)
{
    write(text);
}

void PrintWriter::print(double value)
{
    write(String::valueOf(value));
}

void PrintWriter::print(float value)
{
    write(String::valueOf(value));
}

void PrintWriter::print(long value)
{
    write(String::valueOf(value));
}

void PrintWriter::print(int value)
{
    write(String::valueOf(value));
}

void PrintWriter::print(char16_t ch)
{
    write(ch);
}

void PrintWriter::print(bool value)
{
    write(String::valueOf(value));
}

void PrintWriter::println(const String& text)
{
    print(text);
    newLine();
}

void PrintWriter::println(const char* text)
{
    print(text);
    newLine();
}

void PrintWriter::println(const char16_t* text)
{
    print(text);
    newLine();
}

void PrintWriter::println(double value)
{
    print(value);
    newLine();
}

void PrintWriter::println(float value)
{
    print(value);
    newLine();
}

void PrintWriter::println(long value)
{
    print(value);
    newLine();
}

void PrintWriter::println(int value)
{
    print(value);
    newLine();
}

void PrintWriter::println(char16_t ch)
{
    print(ch);
    newLine();
}

void PrintWriter::println(bool value)
{
    print(value);
    newLine();
}

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
