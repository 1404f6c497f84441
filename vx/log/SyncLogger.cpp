#include "vx/log/SyncLogger.h"

#include "vx/Exception.h"
#include "vx/Result.h"
#include "vx/sync/ScopedLock.h"

namespace vx::log {

SyncLogger::SyncLogger(ILevelLogger* target)
    : m_target(target)
    , m_lock("vx::log::SyncLogger::m_lock")
{
    if (target == nullptr)
        throwResult(RESULT_INVALID_ARGUMENT);
}

SyncLogger::~SyncLogger() noexcept(false) = default;

void SyncLogger::log(int level, const String& text)
{
    const sync::ScopedLock lock(m_lock);
    m_target->log(level, text);
}

} // namespace vx::log
