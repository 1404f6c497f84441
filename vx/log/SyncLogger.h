#pragma once

#include "vx/Object.h"
#include "vx/Reference.h"
#include "vx/log/ILevelLogger.h"
#include "vx/sync/Mutex.h"

namespace vx::log {

/// Lets several threads use one logger: it holds a lock during each call. The sequence numbers of the wrapped logger
/// have no gaps and no duplicates.
class VX_API SyncLogger : public Object, public ILevelLogger {
public:
    /// Holds a reference to the target until this object is destroyed.
    explicit SyncLogger(ILevelLogger* target);

    VX_OBJECT_UNKNOWN(Object)
    ~SyncLogger() noexcept(false) override;

    // ILevelLogger
    void log(int level, const String& text) override;

private:
    const Reference<ILevelLogger> m_target VX_PT_GUARDED_BY(m_lock);
    sync::Mutex m_lock;
};

} // namespace vx::log
