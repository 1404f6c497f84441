#include "vx/util/FilePath.h"

#include "vx/Exceptions.h"
#include "vx/TerminatedText.h"
#include "vx/detail/StringLocks.h"
#include "vx/util/PathNormalizer.h"
#include "vxsys/File.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace vx::util {

namespace {

using View = std::u16string_view;

constexpr int MAX_CANONICAL = 261; // units, with the terminator
constexpr int MAX_DIRECTORY = 4100; // a drive, and the longest path of the system

/// Where the parts of a path begin or end, each within the text.
struct Parts {
    std::size_t root;
    std::size_t directoryEnd;
    std::size_t name;
    std::size_t extension;
};

Parts split(View path, int rootLength)
{
    const std::size_t root = std::min(static_cast<std::size_t>(rootLength), path.size());
    const std::size_t last = path.rfind(FilePath::dirDelim);
    const bool isFound = last != View::npos;
    const std::size_t name = isFound && last >= root ? last + 1 : root;
    const std::size_t dot = path.rfind(u'.');
    return {root, isFound ? std::max(last, root) : root, name, dot != View::npos && dot >= name ? dot : path.size()};
}

/// The index where the share of a UNC path ends.
std::size_t endOfShare(View path)
{
    constexpr std::size_t SERVER = 2;
    const std::size_t serverEnd = std::min(path.find(FilePath::dirDelim, SERVER), path.size());
    if (serverEnd == SERVER)
        throw InvalidPathException(u"no server name");
    const std::size_t share = std::min(serverEnd + 1, path.size());
    const std::size_t shareEnd = std::min(path.find(FilePath::dirDelim, share), path.size());
    if (shareEnd == share)
        throw InvalidPathException(u"no share name");
    return shareEnd;
}

std::size_t lengthOfRoot(View path, View uncLead)
{
    const std::size_t colon = path.find(u':');
    if (colon != View::npos && colon > 1)
        throw InvalidPathException(u"invalid drive");
    if (colon == 1)
        return 2;
    if (path.size() > uncLead.size() && path.starts_with(uncLead))
        return endOfShare(path);
    return 0;
}

template <std::size_t Size, class Call>
String textFromSystem(Call call)
{
    std::array<char16_t, Size> text {};
    throwIfFailed(call(text.data(), static_cast<std::int32_t>(Size)));
    return String(text.data());
}

String endInDelimiter(String directory)
{
    if (!directory.view().ends_with(FilePath::dirDelim))
        directory += FilePath::dirDelim;
    return directory;
}

} // namespace

FilePath::FilePath(const String& path)
    : m_path(path)
{
    normalize();
}

FilePath::~FilePath() noexcept = default;

String FilePath::toString() const
{
    return m_path;
}

bool FilePath::isUNCPath() const
{
    return m_path.view().starts_with(View(s_UNCLead.text));
}

bool FilePath::isAbsolutePath() const
{
    return m_rootLength > 0;
}

String FilePath::getDrive() const
{
    View root = m_path.view().substr(0, split(m_path, m_rootLength).root);
    if (root.ends_with(dirDelim))
        root.remove_suffix(1);
    return root;
}

String FilePath::getDirectory() const
{
    return m_path.view().substr(0, split(m_path, m_rootLength).directoryEnd);
}

String FilePath::getName() const
{
    return m_path.view().substr(split(m_path, m_rootLength).name);
}

String FilePath::getBaseName() const
{
    const Parts parts = split(m_path, m_rootLength);
    return m_path.view().substr(parts.name, parts.extension - parts.name);
}

String FilePath::getExtension() const
{
    return m_path.view().substr(split(m_path, m_rootLength).extension);
}

String FilePath::getParentPath() const
{
    const View path = m_path;
    const std::size_t last = path.rfind(dirDelim);
    const auto root = static_cast<std::size_t>(m_rootLength);
    if (last != View::npos && last >= root)
        return path.substr(0, last);
    return root > 0 && path.size() > root ? path.substr(0, root) : View();
}

String FilePath::getAbsolutePath() const
{
    return isAbsolutePath() ? m_path : FilePath(getCurrentDir() + m_path).toString();
}

String FilePath::getCanonicalPath() const
{
    if (isUNCPath())
        return m_path;
    return textFromSystem<MAX_CANONICAL>(
        [&](char16_t* text, std::int32_t size) { return VXPathExpand(SystemName(m_path), text, size); });
}

String FilePath::getChildPath(const char16_t*) const
{
    return {};
}

String FilePath::getCurrentDir()
{
    return endInDelimiter(textFromSystem<MAX_DIRECTORY>(VXPathGetCurrent));
}

String FilePath::getTempDir()
{
    return endInDelimiter(textFromSystem<MAX_DIRECTORY>(VXPathGetTemp));
}

void FilePath::normalize()
{
    m_rootLength = 0;
    vx::detail::StringWriteLock target(m_path);
    char16_t* const units = target.data();
    std::replace(units, units + target.length(), u'/', dirDelim);
    const View path(units, static_cast<std::size_t>(target.length()));
    const std::size_t start = lengthOfRoot(path, s_UNCLead.text);
    const bool isDelimited = start < path.size() && path[start] == dirDelim;

    PathNormalizer normalizer(PathNormalizer::SLASH_SYSTEM);
    target.setLength(static_cast<int>(start) + normalizer.run(path.substr(start), units + start));
    m_rootLength = static_cast<int>(start) + (isDelimited ? 1 : 0);
}

} // namespace vx::util
