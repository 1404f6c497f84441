#pragma once

#include "vx/log/LogEntry.h"

#include <cstdint>

namespace vx::log::detail {

/// The fields of an entry in the order in which `getFieldNames` gives their names, without a set of them. Only for an entry
/// of the library's own with few fields: the buckets of a map from the last down, and in one of them the older first.
class FieldOrder {
public:
    struct Row {
        std::uint32_t bucket;
        const String* name;
        const Object* value; ///< may be null
    };

    /// The entry keeps its fields meanwhile.
    explicit FieldOrder(const ILogEntry& entry);

    bool isKnown() const noexcept { return m_isKnown; }
    const Row* begin() const noexcept { return m_rows; }
    const Row* end() const noexcept { return m_rows + m_size; }

private:
    Row m_rows[LogEntry::FEW];
    int m_size = 0;
    bool m_isKnown = false;
};

} // namespace vx::log::detail
