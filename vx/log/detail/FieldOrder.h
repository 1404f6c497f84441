#pragma once

#include "vx/log/LogEntry.h"

#include <cstdint>
#include <string_view>

namespace vx::log::detail {

class EntryText;

/// The fields of an entry in the order in which `getFieldNames` gives their names, without a set of them. Only for an entry
/// of the library's own with few fields: the buckets of a map from the last down, and in one of them the older first.
class FieldOrder {
public:
    struct Row {
        std::uint32_t bucket;
        LogEntry::LoggerField field; ///< whose value nobody has made, where `value` is null
        const Object* value; ///< not counted
        std::u16string_view name;
    };

    /// The entry keeps its fields meanwhile.
    explicit FieldOrder(const ILogEntry& entry);

    bool isKnown() const noexcept { return m_entry != nullptr; }
    const Row* begin() const noexcept { return m_rows; }
    const Row* end() const noexcept { return m_rows + m_size; }

    /// Appends the text of a row's value. Throws ResultException with RESULT_END_OF_FILE where it is null.
    void print(const Row& row, EntryText& text) const;

private:
    Row m_rows[LogEntry::FEW];
    int m_size = 0;
    const LogEntry* m_entry = nullptr;
};

} // namespace vx::log::detail
