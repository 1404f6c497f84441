#include "vxsys/Registry.h"
#include "vxsys/Result.h"

#include <cerrno>
#include <cstdint>
#include <string_view>

namespace {

using namespace vxsys::results;

constexpr std::uint32_t FROM_SYSTEM = 0x80070000;

struct ErrorRow {
    int native;
    std::uint16_t windows; ///< of "System Error Codes" in the Windows documentation
    const char16_t* text; ///< as VXResultGetText gives it
};

// clang-format off

/// Of errors with the same number, VXResultToNative returns the first one.
constexpr ErrorRow ERRORS[] = {
    // errno       number text
    {ENOTTY,       0x1,   u"the call does not fit the device"},
    {ENOENT,       0x2,   u"no such file or directory"},
    {ENOTDIR,      0x3,   u"a part of the path is not a directory"},
    {EMFILE,       0x4,   u"too many open files"},
    {ENFILE,       0x4,   u"too many open files"},
    {EACCES,       0x5,   u"permission denied"},
    {EBADF,        0x6,   u"invalid handle"},
    {EIDRM,        0x6,   u"invalid handle"},
    {E2BIG,        0xA,   u"arguments and environment are too long"},
    {ENOMEM,       0xE,   u"out of memory"},
    {EXDEV,        0x11,  u"not on the same file system"},
    {EROFS,        0x13,  u"read-only file system"},
    {ENODEV,       0x14,  u"no such device"},
    {ENXIO,        0x14,  u"no such device"},
    {ENOMEDIUM,    0x15,  u"no medium in the device"},
    {ETXTBSY,      0x20,  u"the file is in use"},
    {ENOTSUP,      0x32,  u"not supported"},
    {ECONNRESET,   0x40,  u"connection reset"},
    {EINVAL,       0x57,  u"invalid argument"},
    {EPIPE,        0x6D,  u"broken pipe"},
    {ENOSPC,       0x70,  u"the disk is full"},
    {EDQUOT,       0x70,  u"the disk is full"},
    {ENOSYS,       0x78,  u"the system lacks this call"},
    {ERANGE,       0x7A,  u"the result does not fit"},
    {ECHILD,       0x80,  u"no child process to wait for"},
    {ESPIPE,       0x84,  u"the file has no positions to seek"},
    {ENOTEMPTY,    0x91,  u"the directory is not empty"},
    {EBUSY,        0xAA,  u"busy"},
    {EEXIST,       0xB7,  u"it exists already"},
    {ENOEXEC,      0xC1,  u"not a program or library of this system"},
    {ENAMETOOLONG, 0xCE,  u"the name is too long"},
    {EFBIG,        0xDF,  u"the file is too large"},
    {EISDIR,       0x150, u"is a directory"},
    {EFAULT,       0x1E7, u"invalid address"},
    {EOVERFLOW,    0x216, u"arithmetic overflow"},
    {EOWNERDEAD,   0x2DF, u"the owner ended without a release"},
    {EINTR,        0x3E3, u"interrupted"},
    {ESTALE,       0x3EE, u"the file was replaced meanwhile"},
    {EILSEQ,       0x459, u"not a character of this encoding"},
    {EIO,          0x45D, u"device error"},
    {EDEADLK,      0x46B, u"the wait would never end (deadlock)"},
    {EMLINK,       0x476, u"too many links"},
    {ESRCH,        0x490, u"no such process or entry"},
    {ECANCELED,    0x4C7, u"cancelled"},
    {ECONNREFUSED, 0x4C9, u"connection refused"},
    {ECONNABORTED, 0x4D4, u"connection aborted"},
    {EAGAIN,       0x4D5, u"resource temporarily unavailable"},
    {EPERM,        0x522, u"operation not permitted"},
    {EUCLEAN,      0x570, u"the file system is damaged"},
    {ENOBUFS,      0x5AA, u"no system resources left"},
    {ENOLCK,       0x5AA, u"no system resources left"},
    {ETIMEDOUT,    0x5B4, u"timed out"},
    {ETIME,        0x5B4, u"timed out"},
    {ELOOP,        0x781, u"too many symbolic links"},
    {ENOTCONN,     0x8CA, u"not connected"},
};

// clang-format on

struct ResultRow {
    std::int32_t result;
    const char16_t* text;
};

/// Results without an error of the system.
constexpr ResultRow RESULTS[] = {
    {RESULT_OK, u"success"},
    {RESULT_FALSE, u"success, nothing was done"},
    {RESULT_NOT_IMPLEMENTED, u"not implemented"},
    {RESULT_NO_INTERFACE, u"the object does not have this interface"},
    {RESULT_POINTER, u"a pointer is null"},
    {RESULT_FAIL, u"unspecified failure"},
    {RESULT_NOT_AVAILABLE, u"not available"},
    {RESULT_BUFFER_TOO_SMALL, u"the buffer is too small"},
    {RESULT_NO_AGGREGATION, u"the class cannot be aggregated"},
    {RESULT_CLASS_NOT_AVAILABLE, u"the component does not have this class"},
    {RESULT_END_OF_FILE, u"end of the file"},
    {RESULT_INVALID_NAME, u"not a valid name"},
    {RESULT_MODULE_NOT_FOUND, u"no such library"},
    {RESULT_SYMBOL_NOT_FOUND, u"no such symbol in the library"},
    {RESULT_NO_MORE_ITEMS, u"no more elements"},
    {RESULT_STORE_CORRUPT, u"the registry is damaged"},
    {RESULT_INVALID_CHARACTER, u"not a character"},
    {RESULT_UNMAPPABLE_CHARACTER, u"the encoding does not have this character"},
    {RESULT_UNKNOWN_ENCODING, u"unknown encoding"},
};

constexpr std::int32_t resultOf(const ErrorRow& row) noexcept
{
    return code(FROM_SYSTEM | row.windows);
}

/// Whether equal results have equal texts, different results have different texts, and no error has two rows.
constexpr bool isUnambiguous() noexcept
{
    using Text = std::u16string_view;
    for (const ErrorRow& row : ERRORS) {
        for (const ErrorRow& other : ERRORS) {
            if ((&row != &other && row.native == other.native)
                || (row.windows == other.windows) != (Text(row.text) == other.text))
                return false;
        }
        for (const ResultRow& other : RESULTS) {
            if (resultOf(row) == other.result || Text(row.text) == other.text)
                return false;
        }
    }
    for (const ResultRow& row : RESULTS) {
        for (const ResultRow& other : RESULTS) {
            if (&row != &other && (row.result == other.result || Text(row.text) == other.text))
                return false;
        }
    }
    return true;
}

static_assert(isUnambiguous());

} // namespace

std::int32_t VXResultFromNative(std::int32_t nativeError) noexcept
{
    if (nativeError == 0)
        return RESULT_OK;
    for (const ErrorRow& row : ERRORS) {
        if (row.native == nativeError)
            return resultOf(row);
    }
    return RESULT_FAIL;
}

std::int32_t VXResultToNative(std::int32_t result) noexcept
{
    for (const ErrorRow& row : ERRORS) {
        if (resultOf(row) == result)
            return row.native;
    }
    return 0;
}

const char16_t* VXResultGetText(std::int32_t result) noexcept
{
    for (const ResultRow& row : RESULTS) {
        if (row.result == result)
            return row.text;
    }
    for (const ErrorRow& row : ERRORS) {
        if (resultOf(row) == result)
            return row.text;
    }
    return nullptr;
}
