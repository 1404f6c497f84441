#include "vx/log/detail/EntryFields.h"

namespace vx::log::detail {

std::int32_t levelOf(const ILogEntry& entry)
{
    if (const auto* const own = dynamic_cast<const LogEntry*>(&entry)) {
        if (const std::int32_t* const level = FieldOrder::plainLevelOf(*own))
            return *level;
    }
    const String name(u"level");
    if (!entry.hasField(name))
        return 0;
    const auto value = entry.getField(name);
    const auto* const number = dynamic_cast<const Number*>(value.get());
    return number != nullptr ? number->toInt32() : 0;
}

String nameOf(const ILogEntry& entry)
{
    const String name(u"name");
    return entry.hasField(name) ? entry.getField(name)->toString() : String();
}

} // namespace vx::log::detail
