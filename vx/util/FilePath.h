#pragma once

#include "vx/String.h"

#include <compare>
#include <concepts>
#include <cstddef>
#include <functional>

namespace vx::util {

/// A normalised path and its parts. The file system is not accessed. The grammar has backslashes, drive letters and UNC
/// names; "/" is read as a backslash. A value class: it changes only by assignment.
///
/// The root is "\", "C:", "C:\", "\\server\share" or "\\server\share\". If ".." components lead above the root, the
/// root loses its backslash: `C:\a\..\..\b` is `C:..\b`.
class VX_API FilePath : public Object {
public:
    static constexpr char16_t dirDelim = u'\\';
    static constexpr char16_t pathDelim = u';';

    /// Throws InvalidPathException: "invalid drive" for a first ":" after index 1, "no server name" and "no share name"
    /// for an incomplete UNC root.
    FilePath(const String& path);
    FilePath(const FilePath& other) noexcept = default;
    FilePath& operator=(const FilePath& other) = default;
    ~FilePath() noexcept override;

    // Object
    String toString() const override;

    bool isUNCPath() const;
    /// Whether the path has a root. A drive without a separator is a root.
    bool isAbsolutePath() const;
    /// "C:" or "\\server\share"; empty for a relative path and for the root "\".
    String getDrive() const;
    /// The text before the name, without its last backslash unless that belongs to the root.
    String getDirectory() const;
    String getName() const;
    /// The name without its extension.
    String getBaseName() const;
    /// With its "."; empty if the name has none. For ".a" the whole name is the extension.
    String getExtension() const;
    /// The root for a name directly after it. Empty for a root itself and for a single name.
    String getParentPath() const;
    /// If the path has no root, the current directory is put before it.
    String getAbsolutePath() const;
    /// The full form of the path, which the platform computes. A UNC path stays as it is. Throws ResultException for a
    /// result of more than 260 units.
    String getCanonicalPath() const;
    /// Always empty.
    String getChildPath(const char16_t* name) const;

    /// By the normalised text; letter case matters. `equals` is that of `Object`: it compares the objects.
    friend bool operator==(const FilePath& left, const FilePath& right) { return left.m_path == right.m_path; }
    friend std::strong_ordering operator<=>(const FilePath& left, const FilePath& right)
    {
        return left.m_path <=> right.m_path;
    }

    /// Both end in a backslash.
    static String getCurrentDir();
    static String getTempDir();

protected:
    static constexpr STRUCT_VX_STR_LIT_INFO s_UNCLead = literal(u"\\\\");

    void normalize();
    /// The length of the root. The path may be shorter if ".." components led above the root.
    int getRootLength() const { return m_rootLength; }

private:
    String m_path;
    int m_rootLength = 0;
};

} // namespace vx::util

template <std::derived_from<vx::util::FilePath> Value>
struct std::hash<Value> {
    std::size_t operator()(const Value& value) const { return value.toString().hashCode(); }
};
