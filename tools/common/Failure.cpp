#include "Failure.h"

#include <vx/Result.h>

#include <cerrno>
#include <cstdio>
#include <system_error>

namespace vxtools {

namespace {

constexpr Message BECAUSE {u"tools.because", "{0}: {1}"};

} // namespace

Failure::Failure(const Text& what, const Text& why)
    : runtime_error(Messages().say(BECAUSE(what, why)))
    , m_text(BECAUSE(what, why))
{
}

UsageError::UsageError(const Text& text)
    : invalid_argument(Messages().say(text))
    , m_text(text)
{
}

std::string textOfError(int error)
{
    return std::generic_category().message(error);
}

std::string textOf(const vx::Exception& failure)
{
    const std::string text = failure.getDescription().toUtf8();
    return text.empty() ? textOfResult(failure.getResult()) : text;
}

std::string textOfResult(std::int32_t result)
{
    // Of errors that share a code, the one that is met most often.
    for (const int error : {EMFILE, ETIMEDOUT, ENODEV, ENOBUFS}) {
        if (VXResultFromNative(error) == result)
            return textOfError(error);
    }
    constexpr int LAST_ERROR = 133;
    for (int error = 1; error <= LAST_ERROR && result != vx::RESULT_FAIL; ++error) {
        if (VXResultFromNative(error) == result)
            return textOfError(error);
    }
    char text[32];
    std::snprintf(text, sizeof text, "failed with 0x%08X", static_cast<unsigned>(result));
    return text;
}

} // namespace vxtools
