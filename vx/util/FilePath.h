#pragma once

#include "vx/String.h"

namespace vx::util {

/// A normalised path, taken apart without a look at the file system. The grammar is that of backslashes, drive letters
/// and UNC names; "/" is read as a backslash. A value: it never changes but by assignment.
///
/// The root is "\", "C:", "C:\", "\\server\share" or that with a backslash behind it. A path that climbs above its root
/// loses the root's backslash to the "..": "C:\a\..\..\b" is "C:..\b".
class VX_API FilePath : public Object {
public:
    static constexpr char16_t dirDelim = u'\\';
    static constexpr char16_t pathDelim = u';';

    /// Throws InvalidPathException: "invalid drive" for a first ":" behind index 1, "no server name" and "no share name"
    /// for a broken UNC root.
    FilePath(const String& path);
    FilePath(const FilePath& other) noexcept = default;
    FilePath& operator=(const FilePath& other) = default;
    ~FilePath() noexcept override;

    // Object
    String toString() const override;

    bool isUNCPath() const;
    /// Has a root. A drive without a separator is one.
    bool isAbsolutePath() const;
    /// "C:" or "\\server\share"; empty for a relative path and for the root "\".
    String getDrive() const;
    /// What stands before the name, without its last backslash unless that belongs to the root.
    String getDirectory() const;
    String getName() const;
    /// The name without its extension.
    String getBaseName() const;
    /// With its "."; empty where the name has none. The whole of ".a" is an extension.
    String getExtension() const;
    /// The root for a name right behind it; empty for a root itself and for a single name.
    String getParentPath() const;
    /// Put behind the current directory where it has no root.
    String getAbsolutePath() const;
    /// The full form that the platform gives the path; a UNC path stays as it is. Throws ResultException for one of more
    /// than 260 units.
    String getCanonicalPath() const;
    /// Empty for every argument.
    String getChildPath(const char16_t* name) const;

    /// Both end in a backslash.
    static String getCurrentDir();
    static String getTempDir();

protected:
    static constexpr STRUCT_VX_STR_LIT_INFO s_UNCLead = literal(u"\\\\");

    void normalize();
    /// Units in front that form the root. A path that climbed above its root may be shorter.
    int getRootLength() const { return m_rootLength; }

private:
    String m_path;
    int m_rootLength = 0;
};

} // namespace vx::util
