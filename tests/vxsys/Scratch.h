#pragma once

#include "tests/NotCopied.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>
#include <sstream>
#include <string>
#include <string_view>
#include <sys/resource.h>

/// A folder for each test, which the destructor removes. It also restores the current directory.
class Scratch : NotCopied {
public:
    Scratch()
    {
        std::string path
            = (std::filesystem::canonical(std::filesystem::temp_directory_path()) / "vxsys-XXXXXX").string();
        if (::mkdtemp(path.data()) == nullptr)
            throw std::filesystem::filesystem_error("mkdtemp", path, std::error_code(errno, std::generic_category()));
        m_path = path;
    }
    ~Scratch()
    {
        std::filesystem::current_path(m_before);
        std::filesystem::remove_all(m_path);
    }

    const std::filesystem::path& getPath() const { return m_path; }
    std::filesystem::path operator/(const char* name) const { return m_path / name; }
    std::ptrdiff_t countEntries() const { return std::distance(std::filesystem::directory_iterator(m_path), {}); }

    /// The path as the platform layer writes it.
    std::u16string full(const char* name = "") const
    {
        std::u16string text = u"C:" + (*name != '\0' ? m_path / name : m_path).u16string();
        for (char16_t& unit : text)
            unit = unit == u'/' ? u'\\' : unit;
        return text;
    }

private:
    std::filesystem::path m_before = std::filesystem::current_path();
    std::filesystem::path m_path;
};

inline void put(const std::filesystem::path& path, std::string_view content)
{
    std::ofstream(path, std::ios::binary) << content;
}

inline std::string contentOf(const std::filesystem::path& path)
{
    std::ostringstream content;
    content << std::ifstream(path, std::ios::binary).rdbuf();
    return content.str();
}

inline std::ptrdiff_t openDescriptors()
{
    const std::filesystem::directory_iterator entries("/proc/self/fd");
    return std::distance(begin(entries), end(entries));
}

/// Limits the size of files of this process to `size`, until the end of the block.
class SizeLimit : NotCopied {
public:
    explicit SizeLimit(rlim_t size)
        : m_handler(std::signal(SIGXFSZ, SIG_IGN))
    {
        ::getrlimit(RLIMIT_FSIZE, &m_before);
        const rlimit limit {size, m_before.rlim_max};
        ::setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~SizeLimit()
    {
        ::setrlimit(RLIMIT_FSIZE, &m_before);
        std::signal(SIGXFSZ, m_handler);
    }

private:
    void (*m_handler)(int);
    rlimit m_before {};
};

/// Sets or removes an environment variable, until the end of the block.
class ScopedVariable : NotCopied {
public:
    ScopedVariable(const char* name, const char* value)
        : m_name(name)
    {
        if (const char* before = std::getenv(name))
            m_before = before;
        set(value);
    }
    ~ScopedVariable() { set(m_before ? m_before->c_str() : nullptr); }

private:
    void set(const char* value)
    {
        if (value != nullptr)
            ::setenv(m_name, value, 1);
        else
            ::unsetenv(m_name);
    }

    const char* m_name;
    std::optional<std::string> m_before;
};
