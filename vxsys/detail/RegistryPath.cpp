#include "vxsys/detail/RegistryPath.h"

#include "vxsys/Result.h"
#include "vxsys/Text.h"
#include "vxsys/detail/ObjectName.h"
#include "vxsys/detail/Utf.h"

#include <algorithm>

namespace vxsys::detail {

namespace {

using namespace vxsys::results;

/// More than any tree in use has, but few enough to keep one descriptor open for each level.
constexpr std::size_t DEPTH_LIMIT = 128;
constexpr std::size_t BYTES_A_UNIT = 3;

std::string fileNameOf(std::u16string_view name)
{
    const std::u16string folded = foldRegistryName(name);
    char narrow[REGISTRY_NAME_LIMIT * BYTES_A_UNIT];
    const Conversion done = utf16ToUtf8(folded, narrow, sizeof narrow);
    return ObjectName('k', {narrow, done.written}).get();
}

} // namespace

std::int32_t checkRegistryName(std::u16string_view name) noexcept
{
    if (name.size() > REGISTRY_NAME_LIMIT)
        return RESULT_NAME_TOO_LONG;
    char narrow[REGISTRY_NAME_LIMIT * BYTES_A_UNIT];
    return utf16ToUtf8(name, narrow, sizeof narrow).outcome == Outcome::done ? RESULT_OK : RESULT_INVALID_NAME;
}

std::u16string foldRegistryName(std::u16string_view name)
{
    std::u16string folded(name);
    std::transform(folded.begin(), folded.end(), folded.begin(), VXToLowerW);
    return folded;
}

bool isSameRegistryName(std::u16string_view left, std::u16string_view right) noexcept
{
    return std::equal(left.begin(), left.end(), right.begin(), right.end(),
        [](char16_t one, char16_t other) { return one == other || VXToLowerW(one) == VXToLowerW(other); });
}

std::int32_t RegistryPath::assign(std::u16string_view key)
{
    m_steps.clear();
    while (!key.empty()) {
        const std::u16string_view name = key.substr(0, key.find(u'\\'));
        key.remove_prefix(std::min(name.size() + 1, key.size()));
        if (name.empty())
            continue;
        if (const std::int32_t result = checkRegistryName(name); failed(result))
            return result;
        if (m_steps.size() == DEPTH_LIMIT)
            return RESULT_NAME_TOO_LONG;
        m_steps.push_back({name, fileNameOf(name)});
    }
    return RESULT_OK;
}

} // namespace vxsys::detail
