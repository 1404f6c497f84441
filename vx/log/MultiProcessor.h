#pragma once

#include "vx/Object.h"
#include "vx/Reference.h"
#include "vx/log/ILogProcessor.h"
#include "vx/sync/Mutex.h"
#include "vxsys/Memory.h"

#include <vector>

namespace vx::log {

/// Passes each entry to several processors, one entry at a time, in the order in which the processors were added. If
/// one throws, those after it do not see the entry.
class VX_API MultiProcessor : public Object, public ILogProcessor {
public:
    /// Has no processors: entries are dropped.
    static Reference<MultiProcessor> create();

    VX_OBJECT_UNKNOWN(Object)
    ~MultiProcessor() noexcept(false) override;

    /// Holds a reference to the processor as long as this object lives. Takes no lock: call it before the first entry,
    /// or on the thread that logs. A processor that is added while an entry is passed on sees that entry, after the
    /// others.
    void addProcessor(ILogProcessor* processor);

    // ILogProcessor
    void process(const ILogEntry* entry) override;

private:
    MultiProcessor();

    std::vector<Reference<ILogProcessor>, vxsys::Allocator<Reference<ILogProcessor>>> m_processors;
    sync::Mutex m_lock;
};

} // namespace vx::log
