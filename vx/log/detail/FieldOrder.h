#pragma once

#include "vx/log/LogEntry.h"

#include <array>
#include <cstddef>
#include <span>
#include <string_view>
#include <vector>

namespace vx::log::detail {

/// The fields of an entry in the order of the names in `getFieldNames`. The entry must not change meanwhile.
///
/// That set is filled from a map, and both have the same buckets until they grow. Iterating the set then visits the
/// buckets from the last to the first, and in each bucket the older field first.
class FieldOrder {
public:
    using Field = LogEntry::Field;
    static constexpr std::size_t LOGGER_FIELDS = LogEntry::LOGGER_FIELD_COUNT;

    explicit FieldOrder(const LogEntry& entry);
    FieldOrder(const FieldOrder&) = delete;
    FieldOrder& operator=(const FieldOrder&) = delete;

    const Field* const* begin() const noexcept { return m_fields.data(); }
    const Field* const* end() const noexcept { return m_fields.data() + m_fields.size(); }

    std::u16string_view nameOf(const Field& field) const noexcept { return m_entry.nameOf(field); }
    /// Null if no logger has set the level.
    static const std::int32_t* plainLevelOf(const LogEntry& entry) noexcept;
    /// Whether all values were set by a logger and are no objects: to print them calls no code of others.
    static bool isPlain(const LogEntry& entry) noexcept;
    static bool isNull(const Field& field) noexcept { return field.isNull(); }
    /// Whether the value is a number of this library.
    static bool isNumber(const Field& field) noexcept;
    /// Counts in the order sequence, thread, name, timestamp, level, text. LOGGER_FIELDS for any other field.
    static std::size_t loggerFieldOf(const Field& field) noexcept { return field.loggerField; }
    /// Appends what `toString` of the value gives, with lone halves of surrogate pairs replaced. Throws ResultException
    /// with RESULT_END_OF_FILE if the value is null.
    template <class Builder>
    void print(const Field& field, Builder& text) const;

private:
    static constexpr std::size_t FEW = 16;

    void sort();
    void takeFromNames();

    const LogEntry& m_entry;
    std::array<const Field*, FEW> m_few;
    std::vector<const Field*, vxsys::Allocator<const Field*>> m_many;
    std::span<const Field*> m_fields;
};

} // namespace vx::log::detail
