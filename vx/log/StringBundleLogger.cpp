#include "vx/log/StringBundleLogger.h"

#include "vx/Exception.h"
#include "vx/Result.h"
#include "vx/log/detail/Placeholders.h"

namespace vx::log {

StringBundleLogger::StringBundleLogger(const i18n::StringBundle* bundle, ILevelLogger* target)
    : m_target(target)
    , m_bundle(bundle)
{
    if (bundle == nullptr || target == nullptr)
        throwResult(RESULT_INVALID_ARGUMENT);
}

StringBundleLogger::~StringBundleLogger() noexcept(false) = default;

void StringBundleLogger::log(int level, const String& key, const collections::List<Object>& arguments)
{
    m_target->log(level, detail::expandPlaceholders(m_bundle->getString(key), arguments));
}

void StringBundleLogger::log(int level, const String& key)
{
    m_target->log(level, m_bundle->getString(key));
}

} // namespace vx::log
