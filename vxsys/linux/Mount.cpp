#include "vxsys/Mount.h"

#include "vxsys/Result.h"
#include "vxsys/detail/Path.h"
#include "vxsys/detail/Utf.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <mntent.h>
#include <string_view>

namespace {

using namespace vxsys::results;
using namespace vxsys::detail;

constexpr const char* TABLE = "/proc/self/mounts";

struct KindRow {
    std::string_view fileSystem;
    std::int32_t kind;
};

/// All other kinds are local, or have no name that another machine knows.
constexpr KindRow KINDS[] = {
    {"cifs", VX_MOUNT_SHARE},
    {"smb3", VX_MOUNT_SHARE},
    {"smbfs", VX_MOUNT_SHARE},
    {"nfs", VX_MOUNT_NFS},
    {"nfs4", VX_MOUNT_NFS},
    {"ncpfs", VX_MOUNT_NCP},
};

std::int32_t kindOf(std::string_view fileSystem) noexcept
{
    const auto* row = std::find_if(
        std::begin(KINDS), std::end(KINDS), [&](const KindRow& each) { return each.fileSystem == fileSystem; });
    return row != std::end(KINDS) ? row->kind : VX_MOUNT_LOCAL;
}

bool holds(std::string_view folder, std::string_view path) noexcept
{
    return path.starts_with(folder)
        && (path.size() == folder.size() || folder.ends_with('/') || path[folder.size()] == '/');
}

struct CloseTable {
    void operator()(std::FILE* table) const noexcept { ::endmntent(table); }
};

std::int32_t widen(std::string_view native, char16_t* target, std::int32_t size) noexcept
{
    const Conversion done = utf8ToUtf16(native, target, static_cast<std::size_t>(size) - 1);
    target[done.outcome == Outcome::done ? done.written : 0] = 0;
    return done.outcome == Outcome::done  ? RESULT_OK
        : done.outcome == Outcome::noRoom ? RESULT_BUFFER_TOO_SMALL
                                          : RESULT_INVALID_NAME;
}

/// The index after `folder` and a separator in the wide form of `path`.
std::int32_t indexAfter(std::string_view folder, std::string_view path) noexcept
{
    char16_t wide[NATIVE_PATH_SIZE + 2]; // with a drive
    const bool isAll = path.size() == folder.size();
    widenPath(path.substr(0, folder.size() + (isAll || folder.ends_with('/') ? 0 : 1)), wide, std::size(wide));
    return static_cast<std::int32_t>(std::u16string_view(wide).size());
}

} // namespace

std::int32_t VXMountFind(
    const char16_t* path, std::int32_t* kind, char16_t* source, std::int32_t size, std::int32_t* rest) noexcept
{
    if (path == nullptr || kind == nullptr || source == nullptr || size < 1 || rest == nullptr)
        return RESULT_INVALID_ARGUMENT;
    *kind = VX_MOUNT_LOCAL;
    *source = 0;
    *rest = 0;
    NativePath native;
    if (const std::int32_t result = native.assign(path); failed(result))
        return result;

    const char* const other = ::secure_getenv("VXSYS4_MOUNTS");
    const std::unique_ptr<std::FILE, CloseTable> table(::setmntent(other != nullptr ? other : TABLE, "re"));
    if (table == nullptr)
        return VXResultFromNative(errno);

    // The deepest folder is used. Of two mounts in one folder it is the later one, which hides the other.
    std::size_t deepest = 0;
    std::int32_t result = RESULT_NOT_FOUND;
    ::mntent entry;
    char line[4 * NATIVE_PATH_SIZE]; // a folder and what is mounted there, with each byte as an octal number
    while (::getmntent_r(table.get(), &entry, line, sizeof line) != nullptr) {
        const std::string_view folder = entry.mnt_dir;
        if (folder.size() < deepest || !holds(folder, native.get()))
            continue;
        deepest = folder.size();
        *kind = kindOf(entry.mnt_type);
        *rest = indexAfter(folder, native.get());
        result = widen(*kind != VX_MOUNT_LOCAL ? entry.mnt_fsname : "", source, size);
    }
    return result;
}
