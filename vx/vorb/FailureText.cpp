#include "vx/vorb/FailureText.h"

#include "vx/Exception.h"
#include "vx/Reference.h"
#include "vx/String.h"

namespace vx::vorb {

void throwIfFailedIn(IVXUnknown& component, std::int32_t result)
{
    if (result >= 0)
        return;
    Reference<IVXFailureText> source;
    if (component.QueryInterface(IVXFailureText::IID, source.outVoid()) < 0 || source == nullptr)
        throwResult(result);
    const Reference<String> text(new String); // a component may add a reference to its argument
    if (source->GetFailureText(text.get()) < 0)
        throwResult(result);
    throw ResultException(result, *text);
}

} // namespace vx::vorb
