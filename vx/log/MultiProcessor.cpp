#include "vx/log/MultiProcessor.h"

#include "vx/Exception.h"
#include "vx/Result.h"
#include "vx/sync/ScopedLock.h"

namespace vx::log {

MultiProcessor::MultiProcessor() = default;

MultiProcessor::~MultiProcessor() noexcept(false) = default;

Reference<MultiProcessor> MultiProcessor::create()
{
    return new MultiProcessor;
}

void MultiProcessor::addProcessor(ILogProcessor* processor)
{
    if (processor == nullptr)
        throwResult(RESULT_INVALID_ARGUMENT);
    m_processors.emplace_back(processor);
}

void MultiProcessor::process(const ILogEntry* entry)
{
    const sync::ScopedLock lock(m_lock);
    // A processor may add another one, which sees this entry too. None is ever removed, so each lives as long as this
    // object.
    for (std::size_t index = 0; index < m_processors.size(); ++index)
        m_processors[index]->process(entry);
}

} // namespace vx::log
