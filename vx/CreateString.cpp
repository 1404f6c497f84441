#include "vx/CreateString.h"

#include "vx/Reference.h"
#include "vx/Result.h"
#include "vx/String.h"
#include "vx/vorb/Boundary.h"

#include <string_view>

using namespace vx;

namespace {

template <class Unit>
std::int32_t create(const Unit* text, std::int32_t length, const _GUID* iid, void** out)
{
    if (out == nullptr)
        return RESULT_POINTER;
    *out = nullptr;
    if (iid == nullptr || length < -1 || (text == nullptr && length > 0))
        return RESULT_INVALID_ARGUMENT;
    return vorb::resultAtBoundary([&] {
        using View = std::basic_string_view<Unit>;
        const View view = text == nullptr ? View()
            : length == -1                ? View(text)
                                          : View(text, static_cast<std::size_t>(length));
        return Reference<String>(new String(view))->QueryInterface(*iid, out);
    });
}

} // namespace

std::int32_t VXCreateString(const char16_t* text, std::int32_t length, const _GUID* iid, void** out)
{
    return create(text, length, iid, out);
}

std::int32_t VXCreateStringFromUtf8(const char* text, std::int32_t length, const _GUID* iid, void** out)
{
    return create(text, length, iid, out);
}
