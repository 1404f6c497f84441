#include "vxsys/Result.h"

#include <cerrno>
#include <cstdint>
#include <string_view>

namespace {

using namespace vxsys::results;

struct ErrorRow {
    int native;
    std::uint16_t windows;
    const char* meaning; ///< of the number; for readers, and to see at compile time that no two meanings share one
};

/// Numbers of "System Error Codes" in the Windows documentation.
constexpr ErrorRow ERRORS[] = {
    {ENOTTY, 0x1, "invalid function"},
    {ENOENT, 0x2, "file not found"},
    {ENOTDIR, 0x3, "path not found"},
    {EMFILE, 0x4, "too many open files"},
    {ENFILE, 0x4, "too many open files"},
    {EACCES, 0x5, "access denied"},
    {EBADF, 0x6, "invalid handle"},
    {EIDRM, 0x6, "invalid handle"},
    {E2BIG, 0xA, "bad environment"},
    {ENOMEM, 0xE, "out of memory"},
    {EXDEV, 0x11, "not the same device"},
    {EROFS, 0x13, "write protected"},
    {ENODEV, 0x14, "no such device"},
    {ENXIO, 0x14, "no such device"},
    {ENOMEDIUM, 0x15, "not ready"},
    {ETXTBSY, 0x20, "sharing violation"},
    {ENOTSUP, 0x32, "not supported"},
    {ECONNRESET, 0x40, "network name no longer available"},
    {EINVAL, 0x57, "invalid parameter"},
    {EPIPE, 0x6D, "broken pipe"},
    {ENOSPC, 0x70, "disk full"},
    {EDQUOT, 0x70, "disk full"},
    {ENOSYS, 0x78, "call not implemented"},
    {ERANGE, 0x7A, "insufficient buffer"},
    {ECHILD, 0x80, "no child to wait for"},
    {ESPIPE, 0x84, "no seek on this device"},
    {ENOTEMPTY, 0x91, "directory not empty"},
    {EBUSY, 0xAA, "busy"},
    {EEXIST, 0xB7, "exists already"},
    {ENOEXEC, 0xC1, "bad executable format"},
    {ENAMETOOLONG, 0xCE, "file name too long"},
    {EFBIG, 0xDF, "file too large"},
    {EISDIR, 0x150, "not supported on a directory"},
    {EFAULT, 0x1E7, "invalid address"},
    {EOVERFLOW, 0x216, "arithmetic overflow"},
    {EOWNERDEAD, 0x2DF, "owner ended without a release"},
    {EINTR, 0x3E3, "operation aborted"},
    {ESTALE, 0x3EE, "file altered from outside"},
    {EILSEQ, 0x459, "no Unicode translation"},
    {EIO, 0x45D, "device error"},
    {EDEADLK, 0x46B, "possible deadlock"},
    {EMLINK, 0x476, "too many links"},
    {ESRCH, 0x490, "element not found"},
    {ECANCELED, 0x4C7, "cancelled"},
    {ECONNREFUSED, 0x4C9, "connection refused"},
    {ECONNABORTED, 0x4D4, "connection aborted"},
    {EAGAIN, 0x4D5, "retry"},
    {EPERM, 0x522, "a privilege is needed"},
    {EUCLEAN, 0x570, "file corrupt"},
    {ENOLCK, 0x5AA, "no system resources"},
    {ENOBUFS, 0x5AA, "no system resources"},
    {ETIMEDOUT, 0x5B4, "timed out"},
    {ETIME, 0x5B4, "timed out"},
    {ELOOP, 0x781, "name cannot be resolved"},
    {ENOTCONN, 0x8CA, "not connected"},
};

constexpr bool isUnambiguous() noexcept
{
    for (const ErrorRow& row : ERRORS) {
        for (const ErrorRow& other : ERRORS) {
            const bool isSameMeaning = std::string_view(row.meaning) == other.meaning;
            if ((&row != &other && row.native == other.native) || (row.windows == other.windows) != isSameMeaning)
                return false;
        }
    }
    return true;
}

static_assert(isUnambiguous(), "one row for each error, one number for each meaning");

} // namespace

std::int32_t VXResultFromNative(std::int32_t nativeError) noexcept
{
    constexpr std::uint32_t FROM_SYSTEM = 0x80070000;

    if (nativeError == 0)
        return RESULT_OK;
    for (const ErrorRow& row : ERRORS) {
        if (row.native == nativeError)
            return code(FROM_SYSTEM | row.windows);
    }
    return RESULT_FAIL;
}
