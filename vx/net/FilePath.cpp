#include "vx/net/FilePath.h"

#include "vx/Exceptions.h"
#include "vx/GlobalLock.h"
#include "vx/Result.h"
#include "vx/TerminatedText.h"
#include "vx/sync/ScopedLock.h"
#include "vxsys/Mount.h"
#include "vxsys/Net.h"

#include <algorithm>
#include <atomic>
#include <string>
#include <string_view>

namespace vx::net {

namespace {

using View = std::u16string_view;

constexpr View UNC_LEAD = u"\\\\";
constexpr int MAX_SOURCE = 4100; // what is mounted, the longest path of the system and a server

/// Removes the colon from "\\server\volume:\a", since it belongs to no drive.
String withoutVolumeSign(const String& path)
{
    std::u16string text(path.view());
    std::replace(text.begin(), text.end(), u'/', util::FilePath::dirDelim);
    const std::size_t serverEnd = text.find(util::FilePath::dirDelim, UNC_LEAD.size());
    if (!text.starts_with(UNC_LEAD) || serverEnd == text.npos)
        return path;
    const std::size_t shareEnd = std::min(text.find(util::FilePath::dirDelim, serverEnd + 1), text.size());
    if (text.find(u':') != shareEnd - 1)
        return path;
    text.erase(shareEnd - 1, 1);
    return String(text);
}

} // namespace

FilePath::FilePath(const String& path)
    : util::FilePath(withoutVolumeSign(path))
{
    initialize();
}

FilePath::FilePath(const util::FilePath& path)
    : util::FilePath(path)
{
}

FilePath::~FilePath() noexcept = default;

String FilePath::getUNCPath() const
{
    if (m_mountType == MOUNT_NFS)
        throw InvalidPathException(u"NFS cannot be represented by UNC");
    String text(UNC_LEAD);
    text += m_server;
    text += dirDelim;
    text += m_volume;
    text += dirDelim;
    text += m_pathInVolume;
    return text;
}

String FilePath::getNetwarePath() const
{
    throwResult(RESULT_NOT_AVAILABLE);
}

void FilePath::initialize()
{
    if (isUNCPath()) {
        parseUnc(getDrive());
        m_pathInVolume = toString().substring(getRootLength());
        m_mountType = MOUNT_UNC;
    } else {
        initFromMounts();
    }
    if (m_server.isEmpty())
        throw InvalidPathException(u"No server name specified.");
    if (m_mountType != MOUNT_NFS && m_volume.isEmpty())
        throw InvalidPathException(u"No volume name specified.");
}

void FilePath::initFromMounts()
{
    const String fullPath = getCanonicalPath();
    std::int32_t kind = VX_MOUNT_LOCAL;
    std::int32_t rest = 0;
    char16_t source[MAX_SOURCE];
    if (VXMountFind(SystemName(fullPath), &kind, source, MAX_SOURCE, &rest) < 0 || kind == VX_MOUNT_LOCAL) {
        initLocal(fullPath);
        return;
    }

    String text(source);
    m_pathInVolume = fullPath.substring(rest);
    m_mountType = MOUNT_UNC;
    if (kind == VX_MOUNT_SHARE) {
        text.translate(u'/', dirDelim);
        parseUnc(text);
    } else if (kind == VX_MOUNT_NCP) {
        parseNcp(text);
    } else { // what the server calls the file
        m_mountType = MOUNT_NFS;
        if (!m_pathInVolume.isEmpty() && !text.view().ends_with(u'/'))
            text += u'/';
        text += m_pathInVolume;
        text.translate(dirDelim, u'/');
        parseNfs(text);
    }
}

void FilePath::initLocal(const String& fullPath)
{
    constexpr int ROOT = 3; // "C:\"
    const String path = toString();
    const bool hasFullRoot = path.view().substr(0, ROOT).ends_with(u":\\"); // a path may have climbed above it
    m_mountType = MOUNT_LOCAL;
    m_server = getHostName();
    m_volume = util::FilePath(fullPath).getDrive();
    m_volume.setCharAt(1, u'$');
    m_pathInVolume = (hasFullRoot ? path : fullPath).substring(ROOT);
}

void FilePath::parseUnc(const String& text)
{
    const View view = text;
    const std::size_t end = view.starts_with(UNC_LEAD) ? view.find(dirDelim, UNC_LEAD.size()) : View::npos;
    if (end == View::npos)
        throw InvalidPathException(u"Invalid UNC syntax.");
    m_server = view.substr(UNC_LEAD.size(), end - UNC_LEAD.size());
    m_volume = view.substr(end + 1);
    if (m_volume.view().ends_with(u':'))
        m_volume.remove(m_volume.getLength() - 1);
}

void FilePath::parseNfs(const String& text)
{
    const View view = text;
    const std::size_t colon = view.find(u":/");
    if (colon == View::npos)
        throw InvalidPathException(u"Invalid NFS syntax.");
    m_server = view.substr(0, colon);
    m_pathInVolume = view.substr(colon + 1);
}

void FilePath::parseNcp(const String& text)
{
    const View view = text;
    const std::size_t slash = view.find(u'/');
    if (slash == View::npos)
        throw InvalidPathException(u"Invalid NCP syntax.");
    m_server = view.substr(0, slash);
    m_volume = u"UNKNOWN";
}

String FilePath::getHostName()
{
    constexpr int SIZE = 260;
    static char name[SIZE];
    static constinit std::atomic<bool> isKnown {false};
    if (!isKnown.load(std::memory_order_acquire)) {
        if (g_pGlobalLock == nullptr)
            throw IllegalStateException();
        const sync::ScopedLock guard(*g_pGlobalLock);
        if (!isKnown.load(std::memory_order_relaxed)) {
            throwIfFailed(VXGetHostName(name, SIZE));
            isKnown.store(true, std::memory_order_release);
        }
    }
    return String(name);
}

} // namespace vx::net
