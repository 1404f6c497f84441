#pragma once

#include "vx/Exception.h"
#include "vx/Result.h"
#include "vx/String.h"

namespace vx::util::detail {

/// The platform sees a name up to its first zero unit, and so another name than the one that was meant.
inline bool isRegistryText(const String& text)
{
    return text.view().find(u'\0') == std::u16string_view::npos;
}

/// The name as the platform takes it, for as long as `text` stays. Throws ResultException with RESULT_INVALID_NAME.
inline const char16_t* registryText(const String& text)
{
    if (!isRegistryText(text))
        throw ResultException(RESULT_INVALID_NAME);
    return text.getData();
}

} // namespace vx::util::detail
