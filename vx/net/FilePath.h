#pragma once

#include "vx/util/FilePath.h"

#include <cstdint>

namespace vx::net {

/// A path that another machine can use: server, volume, and the path inside the volume.
///
/// The mount table of the system tells where a file is. The file itself is not accessed, and links are not followed.
/// For a file of this machine the server is the name of the machine, and the volume the administrative share of the
/// drive ("C$"). A value class.
class VX_API FilePath : public util::FilePath {
public:
    /// How the path is reached.
    enum MOUNT_TYPE : std::int32_t {
        MOUNT_LOCAL = 0,
        MOUNT_UNC = 1, ///< a network share, by its name or by a folder it is mounted on
        MOUNT_NFS = 2 ///< has no volume; the path is the server's, and begins with "/"
    };

    /// Throws InvalidPathException for a malformed path and for a mount with a malformed name, and ResultException if
    /// the system does not answer. A ":" after the share, as in "\\server\volume:\a", is removed.
    FilePath(const String& path);
    /// Does not read the mount table: server, volume and path stay empty, and the mount type is MOUNT_LOCAL.
    explicit FilePath(const util::FilePath& path);
    FilePath(const FilePath& other) noexcept = default;
    FilePath& operator=(const FilePath& other) = default;
    ~FilePath() noexcept override;

    String getServer() const { return m_server; }
    String getVolume() const { return m_volume; }
    String getPath() const { return m_pathInVolume; }
    MOUNT_TYPE getMountType() const { return m_mountType; }
    bool isLocal() const { return m_mountType == MOUNT_LOCAL; }
    /// "\\server\volume\path". Throws InvalidPathException for MOUNT_NFS.
    String getUNCPath() const;
    /// Always throws ResultException.
    String getNetwarePath() const;

private:
    void initialize();
    void initFromMounts();
    void initLocal(const String& fullPath);
    void parseUnc(const String& text);
    void parseNfs(const String& text);
    void parseNcp(const String& text);
    static String getHostName();

    String m_server;
    String m_volume;
    String m_pathInVolume;
    MOUNT_TYPE m_mountType = MOUNT_LOCAL;
};

} // namespace vx::net
