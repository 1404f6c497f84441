#pragma once

#include "vx/util/FilePath.h"

#include <cstdint>

namespace vx::net {

/// A path that can be told to another machine: server, volume, and the path inside the volume.
///
/// The mount table of the system says where a file lies, without a look at the file itself; links are not followed. A file
/// of this machine has its name as the server, and the administrative share of its drive ("C$") as the volume. A value.
class VX_API FilePath : public util::FilePath {
public:
    /// How the path is reached.
    enum MOUNT_TYPE : std::int32_t {
        MOUNT_LOCAL = 0,
        MOUNT_UNC = 1, ///< a network share, by its name or by a folder it is mounted on
        MOUNT_NFS = 2 ///< has no volume; the path is the server's, and begins with "/"
    };

    /// Throws InvalidPathException for a malformed path and for a mount whose name has another form than it should, and
    /// ResultException where the system does not answer. A ":" behind the share is dropped: "\\server\volume:\a".
    FilePath(const String& path);
    /// Looks nothing up: server, volume and path stay empty, and the mount type is MOUNT_LOCAL.
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
