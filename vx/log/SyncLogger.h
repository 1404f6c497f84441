#pragma once

#include "vx/Object.h"
#include "vx/Reference.h"
#include "vx/log/ILevelLogger.h"
#include "vx/sync/Mutex.h"

namespace vx::log {

/// Lets several threads use one logger: it holds a lock through each call. Sequence numbers behind it have no gap and no
/// double.
class VX_API SyncLogger : public Object, public ILevelLogger {
public:
    /// The target is counted as long as this object lives.
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
