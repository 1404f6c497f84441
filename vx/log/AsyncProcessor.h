#pragma once

#include "vx/Object.h"
#include "vx/Reference.h"
#include "vx/log/ILogProcessor.h"

#include <cstdint>

namespace vx::log {

class AsyncProcessorImpl;

/// Moves the processing of entries to threads of its own: `process` queues the entry and returns. The queue has no limit.
/// One worker keeps the order; several hand entries to the target at the same time, so that one that cannot bear that
/// stands behind a `MultiProcessor`. A worker whose target throws ends; when the last has ended, entries wait.
///
/// The destructor hands over whatever still waits, on its own thread, and does not wait for entries that workers hold; what
/// the target throws at it first leaves it when all is handed over.
class VX_API AsyncProcessor : public Object, public ILogProcessor {
public:
    /// The target is counted until the last worker has ended. With `threads` below 1 entries wait for the destructor.
    static Reference<AsyncProcessor> create(ILogProcessor* target, int threads);

    VX_OBJECT_UNKNOWN(Object)
    ~AsyncProcessor() noexcept(false) override;

    // ILogProcessor
    void process(const ILogEntry* entry) override;

    /// Waits until the target is done with all that was queued. False when `milliseconds` ran out first (0xFFFFFFFF waits
    /// for ever), or when no worker is left to work.
    bool waitUntilDone(std::uint32_t milliseconds = 0xFFFFFFFF);

private:
    AsyncProcessor(ILogProcessor* target, int threads);

    Reference<AsyncProcessorImpl> m_impl;
};

} // namespace vx::log
