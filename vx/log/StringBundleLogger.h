#pragma once

#include "vx/Object.h"
#include "vx/Reference.h"
#include "vx/collections/List.h"
#include "vx/i18n/StringBundle.h"
#include "vx/log/ILevelLogger.h"

namespace vx::log {

/// Logs the texts of a bundle by their keys, so that messages can be translated. A key that the bundle lacks throws
/// what `getString` throws, and nothing is logged.
class VX_API StringBundleLogger : public Object {
public:
    /// Holds a reference to both. Throws ResultException for a null one.
    StringBundleLogger(const i18n::StringBundle* bundle, ILevelLogger* target);
    StringBundleLogger(const StringBundleLogger&) = delete;
    StringBundleLogger& operator=(const StringBundleLogger&) = delete;
    ~StringBundleLogger() noexcept(false) override;

    /// The text's placeholders are replaced by `arguments`, as those of a log entry.
    virtual void log(int level, const String& key, const collections::List<Object>& arguments);
    virtual void log(int level, const String& key);

private:
    Reference<ILevelLogger> m_target;
    Reference<const i18n::StringBundle> m_bundle;
};

} // namespace vx::log
