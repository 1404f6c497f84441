#include "Detection.h"

#include "Texts.h"
#include "Utf8Check.h"
#include "common/Failure.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <memory>
#include <string_view>
#include <strings.h>
#include <unistd.h>
#include <vector>

namespace vxconv {

using namespace vxtools;
using namespace std::literals;

namespace {

/// The longer marks come first: that of UTF-32LE begins as that of UTF-16LE.
constexpr struct {
    std::string_view bytes;
    const char* encoding;
} MARKS[] = {
    {"\xFF\xFE\0\0"sv, "UTF-32LE"},
    {"\0\0\xFE\xFF"sv, "UTF-32BE"},
    {"\xEF\xBB\xBF"sv, "UTF-8"},
    {"\xFF\xFE"sv, "UTF-16LE"},
    {"\xFE\xFF"sv, "UTF-16BE"},
};

[[noreturn]] void fail(const Input& input)
{
    throw Failure(input.name(), textOfError(errno));
}

/// Some bytes, none at the end.
std::size_t readSome(const Input& input, std::vector<char>& block)
{
    for (;;) {
        const ssize_t got = ::read(input.descriptor(), block.data(), block.size());
        if (got >= 0)
            return static_cast<std::size_t>(got);
        if (errno != EINTR)
            fail(input);
    }
}

/// Copies the input to a file without a name, which takes the place of its descriptor.
void makeSeekable(const Input& input, std::vector<char>& block)
{
    const auto failToCopy = [] { throw Failure(P_tmpdir, textOfError(errno)); };
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> copy(std::tmpfile(), std::fclose);
    if (copy == nullptr)
        failToCopy();
    while (const std::size_t got = readSome(input, block)) {
        if (std::fwrite(block.data(), 1, got, copy.get()) != got)
            failToCopy();
    }
    if (std::fflush(copy.get()) != 0 || ::dup2(::fileno(copy.get()), input.descriptor()) < 0
        || ::lseek(input.descriptor(), 0, SEEK_SET) < 0)
        failToCopy();
}

/// Fails at a zero byte: the input is most likely no text, and a conversion in place would destroy it.
void requireText(const Input& input, std::vector<char>& block)
{
    std::int64_t before = 0;
    while (const std::size_t got = readSome(input, block)) {
        const auto zero = std::find(block.begin(), block.begin() + static_cast<std::ptrdiff_t>(got), '\0');
        const auto place = static_cast<std::size_t>(zero - block.begin());
        if (place < got)
            throw Failure(input.name(), NO_TEXT(before + static_cast<std::int64_t>(place)));
        before += static_cast<std::int64_t>(got);
    }
}

bool hasZeroBytes(const std::string& encoding)
{
    return ::strncasecmp(encoding.c_str(), "UTF-16", 6) == 0 || ::strncasecmp(encoding.c_str(), "UTF-32", 6) == 0;
}

} // namespace

Detected detectEncoding(const Input& input, const std::string& fallback)
{
    std::vector<char> block(64 * 1024);
    std::int64_t start = ::lseek(input.descriptor(), 0, SEEK_CUR);
    if (start < 0) {
        makeSeekable(input, block);
        start = 0;
    }
    Detected detected {"UTF-8", 0};
    Utf8Check utf8;
    bool isFirst = true, isUtf8 = true;
    while (const std::size_t got = readSome(input, block)) {
        if (isFirst) {
            for (const auto& mark : MARKS) {
                if (std::string_view(block.data(), got).starts_with(mark.bytes)) {
                    detected = {mark.encoding, static_cast<std::int64_t>(mark.bytes.size())};
                    break;
                }
            }
            if (detected.start > 0)
                break;
        }
        isFirst = false;
        if (utf8.findFault(reinterpret_cast<const signed char*>(block.data()), static_cast<std::int32_t>(got))
            != Utf8Check::NONE) {
            isUtf8 = false;
            break;
        }
    }
    if (utf8.incomplete() > 0)
        isUtf8 = false;
    if (!isUtf8) {
        detected.encoding = fallback;
        if (::lseek(input.descriptor(), start, SEEK_SET) < 0)
            fail(input);
        if (!hasZeroBytes(fallback))
            requireText(input, block);
    }
    if (::lseek(input.descriptor(), start + detected.start, SEEK_SET) < 0)
        fail(input);
    return detected;
}

} // namespace vxconv
