#pragma once

#include "vx/Object.h"
#include "vx/Reference.h"
#include "vx/log/ILogProcessor.h"
#include "vx/sync/Mutex.h"
#include "vxsys/Memory.h"

#include <vector>

namespace vx::log {

/// Hands each entry to several processors, one entry at a time, in the order in which the processors were added. One that
/// throws keeps the entry from those behind it.
class VX_API MultiProcessor : public Object, public ILogProcessor {
public:
    /// Without a processor: entries vanish in it.
    static Reference<MultiProcessor> create();

    VX_OBJECT_UNKNOWN(Object)
    ~MultiProcessor() noexcept(false) override;

    /// The processor is counted as long as this object lives. Without a lock: before the first entry, or on the thread that
    /// logs.
    void addProcessor(ILogProcessor* processor);

    // ILogProcessor
    void process(const ILogEntry* entry) override;

private:
    MultiProcessor();

    std::vector<Reference<ILogProcessor>, vxsys::Allocator<Reference<ILogProcessor>>> m_processors;
    sync::Mutex m_lock;
};

} // namespace vx::log
