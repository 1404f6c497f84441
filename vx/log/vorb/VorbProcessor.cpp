#include "vx/log/vorb/VorbProcessor.h"

#include "vx/Exception.h"
#include "vx/Result.h"
#include "vx/log/ILogEntry.h"
#include "vx/log/vorb/ILogEntry.h"

namespace vx::log::vorb {

VorbProcessor::VorbProcessor(vorb::ILogProcessor* component)
    : m_component(component)
{
    if (component == nullptr)
        throwResult(RESULT_INVALID_ARGUMENT);
}

VorbProcessor::~VorbProcessor() noexcept = default;

Reference<vx::log::ILogProcessor> VorbProcessor::create(vorb::ILogProcessor* component)
{
    return new VorbProcessor(component);
}

void VorbProcessor::process(const vx::log::ILogEntry* entry)
{
    Reference<ILogEntry> component;
    const std::int32_t result = entry != nullptr
        ? const_cast<vx::log::ILogEntry*>(entry)->QueryInterface(ILogEntry::IID, component.outVoid())
        : RESULT_NO_INTERFACE;
    if (failed(result) || component == nullptr)
        throwResult(RESULT_NO_INTERFACE);
    throwIfFailed(m_component->Process(component.get()));
}

} // namespace vx::log::vorb
