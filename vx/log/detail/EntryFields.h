#pragma once

#include "vx/Number.h"
#include "vx/Reference.h"
#include "vx/String.h"
#include "vx/collections/Set.h"
#include "vx/detail/ExactType.h"
#include "vx/detail/TextBuilder.h"
#include "vx/log/ILogEntry.h"
#include "vx/log/LogEntry.h"
#include "vx/log/detail/FieldOrder.h"
#include "vx/log/detail/Utf8Builder.h"
#include "vx/log/detail/WholeText.h"

#include <cstddef>
#include <string_view>

namespace vx::log::detail {

/// The value of a field of a `LogEntry`.
struct OwnValue {
    /// Throws ResultException with RESULT_END_OF_FILE for a null value.
    void print(vx::detail::TextBuilder& text) const { order.print(field, text); }
    void print(Utf8Builder& text) const { order.print(field, text); }
    bool isNull() const noexcept { return FieldOrder::isNull(field); }
    bool isNumber() const noexcept { return FieldOrder::isNumber(field); }

    const FieldOrder& order;
    const FieldOrder::Field& field;
};

/// The value of a field of any other entry.
struct ForeignValue {
    void print(vx::detail::TextBuilder& text) const { appendWhole(text, entry.getField(name)->toString().view()); }
    void print(Utf8Builder& text) const { appendWhole(text, entry.getField(name)->toString().view()); }
    bool isNull() const { return !entry.hasField(name); }
    bool isNumber() const { return dynamic_cast<const Number*>(entry.getField(name).get()) != nullptr; }

    const ILogEntry& entry;
    const String& name;
};

/// Null for an entry of another class.
inline const LogEntry* ownEntry(const ILogEntry& entry)
{
    return vx::detail::isExactly<LogEntry>(entry) ? static_cast<const LogEntry*>(&entry)
                                                  : dynamic_cast<const LogEntry*>(&entry);
}

/// Calls `take(loggerField, name, value)` with each field of `entry`, in the order of its names. `loggerField` counts as
/// `FieldOrder::loggerFieldOf` does, and is LOGGER_FIELDS for a field that no logger sets. Entries of other classes than
/// `LogEntry` are read through their interface.
template <class Take>
void forEachField(const ILogEntry& entry, Take take)
{
    if (const auto* const own = ownEntry(entry)) {
        const FieldOrder order(*own);
        for (const FieldOrder::Field* field : order)
            take(FieldOrder::loggerFieldOf(*field), order.nameOf(*field), OwnValue {order, *field});
        return;
    }
    const Reference<const collections::Set<String>> names = entry.getFieldNames();
    for (const Reference<String>& name : *names)
        take(FieldOrder::LOGGER_FIELDS, name->view(), ForeignValue {entry, *name});
}

/// 0 for an entry without a level that is a number.
std::int32_t levelOf(const ILogEntry& entry);
/// Empty for an entry without a name.
String nameOf(const ILogEntry& entry);

} // namespace vx::log::detail
