#include "vx/log/MultiProcessor.h"

#include "vx/Exception.h"
#include "vx/Result.h"
#include "vx/collections/vorb/LinkedList.h"
#include "vx/sync/ScopedLock.h"

namespace vx::log {

MultiProcessor::MultiProcessor()
    : m_processors(new collections::vorb::LinkedList)
{
}

MultiProcessor::~MultiProcessor() noexcept(false) = default;

Reference<MultiProcessor> MultiProcessor::create()
{
    return new MultiProcessor;
}

void MultiProcessor::addProcessor(ILogProcessor* processor)
{
    if (processor == nullptr)
        throwResult(RESULT_INVALID_ARGUMENT);
    m_processors->add(processor);
}

void MultiProcessor::process(const ILogEntry* entry)
{
    const sync::ScopedLock lock(m_lock);
    const Reference<collections::vorb::ConstIterator> processors = m_processors->createConstIterator();
    while (processors->hasNext()) {
        const Reference<IVXUnknown> processor = processors->next();
        static_cast<ILogProcessor*>(processor.get())->process(entry);
    }
}

} // namespace vx::log
