#pragma once

#include "vx/String.h"
#include "vx/io/FilterWriter.h"

#include <string>
#include <string_view>

namespace vx::io {

/// Prints values as text. It keeps no error state: a failure of the wrapped writer reaches the caller.
class VX_API PrintWriter : public FilterWriter {
public:
    /// With `autoFlush`, each `println` flushes.
    PrintWriter(Writer* sink, bool autoFlush);

    /// Numbers are printed as by `String::valueOf`; narrow text is decoded with the default encoding.
    virtual void print(const String& text);
    virtual void print(const char* text);
    virtual void print(const char16_t* text);
    virtual void print(double value);
    virtual void print(float value);
    virtual void print(long value);
    virtual void print(int value);
    virtual void print(char16_t ch);
    virtual void print(bool value);

    /// The matching `print`, then the character 10 on every platform.
    virtual void println(const String& text);
    virtual void println(const char* text);
    virtual void println(const char16_t* text);
    virtual void println(double value);
    virtual void println(float value);
    virtual void println(long value);
    virtual void println(int value);
    virtual void println(char16_t ch);
    virtual void println(bool value);
    virtual void println();

    void print(unsigned int value) { print(String::valueOf(value)); }
    void print(unsigned long value) { print(String::valueOf(value)); }
    void print(long long value) { print(String::valueOf(value)); }
    void print(unsigned long long value) { print(String::valueOf(value)); }
    void print(std::u16string_view text) { print(String(text)); }
    void print(std::string_view utf8) { print(String(utf8)); }
    void print(std::u8string_view utf8) { print(String(utf8)); }
    void print(const std::string& utf8) { print(String(utf8)); }
    void print(const std::u8string& utf8) { print(String(utf8)); }
    void print(const char8_t* utf8) { print(String(utf8)); }
    void println(unsigned int value) { println(String::valueOf(value)); }
    void println(unsigned long value) { println(String::valueOf(value)); }
    void println(long long value) { println(String::valueOf(value)); }
    void println(unsigned long long value) { println(String::valueOf(value)); }
    void println(std::u16string_view text) { println(String(text)); }
    void println(std::string_view utf8) { println(String(utf8)); }
    void println(std::u8string_view utf8) { println(String(utf8)); }
    void println(const std::string& utf8) { println(String(utf8)); }
    void println(const std::u8string& utf8) { println(String(utf8)); }
    void println(const char8_t* utf8) { println(String(utf8)); }

    /// A narrow character is not a number, and a pointer is not a truth value.
    void print(char) = delete;
    void println(char) = delete;
    template <class T>
    void print(const T* pointer) = delete;
    template <class T>
    void println(const T* pointer) = delete;

protected:
    void newLine();

private:
    bool m_autoFlush;
};

} // namespace vx::io
