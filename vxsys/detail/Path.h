#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace vxsys::detail {

/// The parts of a path in the grammar with backslashes, drives and shares; "/" is a separator too. They are views of
/// the path that was split.
struct PathParts {
    /// "\\server\share": a path of more than two units that begins with two separators.
    bool isShare = false;
    /// A separator comes after the drive, or first in a path without a drive. False for a share.
    bool isRooted = false;
    /// In upper case; 0 for a path without a drive. Any unit before a ":" is taken as a drive.
    char16_t drive = 0;
    std::u16string_view server;
    std::u16string_view share;
    /// The part after the root, without separators at its start.
    std::u16string_view rest;

    /// Whether the path is relative to the current directory. A drive other than C: has none: its paths begin at its
    /// root.
    bool isRelative() const noexcept;
};

PathParts splitPath(std::u16string_view path) noexcept;

/// Writes the full form of `path` to `target` of `size` units, zero-terminated. A relative path begins at `current`,
/// which is a full path. "." and ".." are resolved without looking at files, and a separator at the end stays.
/// RESULT_BUFFER_TOO_SMALL if there is no room, RESULT_INVALID_NAME for a share without the name of a server or of the
/// share.
std::int32_t expandPath(
    std::u16string_view path, std::u16string_view current, char16_t* target, std::size_t size) noexcept;

/// Room for a path of the operating system with its terminator, and for one of ours without its drive.
inline constexpr std::size_t NATIVE_PATH_SIZE = 4096;

/// The form of a path for the operating system: UTF-8 with "/". Drive C: is the root of the file system.
class NativePath {
public:
    /// RESULT_PATH_NOT_FOUND for another drive and for a share, RESULT_NOT_FOUND for an empty path, RESULT_INVALID_NAME
    /// for a lone surrogate, RESULT_INVALID_ARGUMENT for null.
    std::int32_t assign(const char16_t* path) noexcept;

    const char* get() const noexcept { return m_bytes; }

private:
    char m_bytes[NATIVE_PATH_SIZE] = "";
};

/// The reverse: "C:" and the absolute path `native` with backslashes, zero-terminated. RESULT_INVALID_NAME for bytes
/// that are not UTF-8, and for a name with a backslash in it, which would be another path.
std::int32_t widenPath(std::string_view native, char16_t* target, std::size_t size) noexcept;

} // namespace vxsys::detail
