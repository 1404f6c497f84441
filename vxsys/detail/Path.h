#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace vxsys::detail {

/// A path taken apart in the grammar with backslashes, drives and shares; "/" separates as well. Parts are texts inside
/// the path that was split.
struct PathParts {
    /// "\\server\share": a path of more than two units that starts with two separators.
    bool isShare = false;
    /// A separator follows the drive, or starts a path without one. False for a share.
    bool isRooted = false;
    /// Upper-case; 0 where the path names none. Any unit in front of a ":" counts as one.
    char16_t drive = 0;
    std::u16string_view server;
    std::u16string_view share;
    /// What follows the root, with the separators in front of it.
    std::u16string_view rest;

    /// Whether the path stands on the current directory. A drive other than C: has none, and its paths start at its root.
    bool isRelative() const noexcept;
};

PathParts splitPath(std::u16string_view path) noexcept;

/// Writes the full form of `path`, zero-terminated, into `target` of `size` units: relative parts stand on `current`, which
/// is a full path itself, "." and ".." are resolved in the text alone, and a separator at the end stays.
/// RESULT_BUFFER_TOO_SMALL where it does not fit, RESULT_INVALID_NAME for a share without a server's or a share's name.
std::int32_t expandPath(
    std::u16string_view path, std::u16string_view current, char16_t* target, std::size_t size) noexcept;

/// Room for a path of the operating system with its terminator, and so for one of ours but for its drive.
inline constexpr std::size_t NATIVE_PATH_SIZE = 4096;

/// The operating system's form of a path: UTF-8 with "/", drive C: being the root of the file system.
class NativePath {
public:
    /// Another drive and a share give RESULT_PATH_NOT_FOUND, an empty path RESULT_NOT_FOUND, a lone surrogate
    /// RESULT_INVALID_NAME, null RESULT_INVALID_ARGUMENT.
    std::int32_t assign(const char16_t* path) noexcept;

    const char* get() const noexcept { return m_bytes; }

private:
    char m_bytes[NATIVE_PATH_SIZE] = "";
};

/// The other way: "C:" and the absolute path `native` with backslashes, zero-terminated. Bytes that are not UTF-8 and
/// names with a backslash in them, which would mean another path, give RESULT_INVALID_NAME.
std::int32_t widenPath(std::string_view native, char16_t* target, std::size_t size) noexcept;

} // namespace vxsys::detail
