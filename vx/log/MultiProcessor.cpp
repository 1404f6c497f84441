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
    const std::size_t count = m_processors.size();
    for (std::size_t index = 0; index < m_processors.size(); ++index) {
        if (m_processors.size() != count) // as an iterator of a list has it
            throw Exception();
        m_processors[index]->process(entry); // none is ever taken out, so each lives as long as this
    }
}

} // namespace vx::log
