#pragma once

#include "vx/Object.h"
#include "vx/Reference.h"
#include "vx/log/AsyncOptions.h"
#include "vx/log/ILogProcessor.h"
#include "vxsys/Lock.h"

#include <cstdint>

namespace vx::log {

class AsyncProcessorImpl;

/// Moves the processing of entries to worker threads: `process` puts the entry into a queue and returns. The queue has
/// no limit unless `AsyncOptions` gives one. One worker keeps the order. With several workers the target is called from several threads at the same
/// time; put a `MultiProcessor` in front of a target that does not allow this.
///
/// The destructor passes all waiting entries to the target, on its own thread. It does not wait for the workers: each
/// completes its entry and ends. If the target throws, the destructor throws the first exception after the last entry.
/// A worker may run after its `AsyncProcessor` has been destroyed. The stop of the library waits for it, so that the
/// library can be unloaded then.
class VX_API AsyncProcessor : public Object, public ILogProcessor {
public:
    /// What an exception of the target does without `AsyncOptions`. The entry is not tried again in either case.
    enum class Failures {
        END_WORKER, ///< the worker ends; after the last one has ended, entries wait for the destructor
        KEEP_WORKER ///< the worker continues with the next entry
    };

    /// Holds a reference to the target until the last worker has ended. With `threads` below 1 entries wait for the
    /// destructor. An exception of the target ends its worker.
    static Reference<AsyncProcessor> create(ILogProcessor* target, int threads);
    static Reference<AsyncProcessor> create(ILogProcessor* target, int threads, Failures failures);
    /// With a queue of limited size, repeated tries and reports of losses. No exception of the target ends a worker. Throws
    /// ResultException with RESULT_INVALID_ARGUMENT for fewer tries than 1, for a negative limit, and for callers that
    /// would wait for workers when there are none.
    static Reference<AsyncProcessor> create(ILogProcessor* target, const AsyncOptions& options);

    VX_OBJECT_UNKNOWN(Object)
    ~AsyncProcessor() noexcept(false) override;

    // ILogProcessor
    void process(const ILogEntry* entry) override;

    /// Waits until the target has processed all queued entries. Returns true if it accepted all of them. Returns false
    /// if an entry was refused or dropped since the last completed wait, if `milliseconds` have passed
    /// (`VX_WAIT_FOREVER`: no limit), or if entries wait and no worker is left. Each worker holds its last entry until it
    /// takes another one or ends.
    bool waitUntilDone(std::uint32_t milliseconds = VX_WAIT_FOREVER);
    /// May be called at any time on any thread. Entries may be counted while it reads, so the numbers may not match
    /// exactly.
    AsyncCounts getCounts() const;

private:
    explicit AsyncProcessor(AsyncProcessorImpl* impl);

    Reference<AsyncProcessorImpl> m_impl;
};

} // namespace vx::log
