#include "Failure.h"

#include <vx/Describe.h>
#include <vx/Result.h>

namespace vxtools {

namespace {

constexpr Message BECAUSE {u"tools.because", "{0}: {1}"};

} // namespace

Failure::Failure(const Text& what, const Text& why)
    : Failure(BECAUSE(what, why))
{
}

Failure::Failure(const Text& text)
    : runtime_error(Messages().say(text))
    , m_text(text)
{
}

UsageError::UsageError(const Text& text)
    : invalid_argument(Messages().say(text))
    , m_text(text)
{
}

std::string textOfError(int error)
{
    return textOfResult(VXResultFromNative(error));
}

std::string textOf(const vx::Exception& failure)
{
    const std::string text = failure.getDescription().toUtf8();
    return text.empty() ? textOfResult(failure.getResult()) : text;
}

std::string textOfResult(std::int32_t result)
{
    return vx::describe(result).toUtf8();
}

} // namespace vxtools
