#pragma once

#include "vx/log/LogEntry.h"

#include <array>
#include <cstddef>
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
        LogEntry::LoggerField field; ///< LOGGER_FIELD_COUNT: none of a logger
        const char16_t* name;
        std::size_t length; ///< of the name
        const Object* value; ///< not counted, may be null; not of a logger's field
    };

    /// The entry keeps its fields meanwhile.
    explicit FieldOrder(const ILogEntry& entry);

    bool isKnown() const noexcept { return m_entry != nullptr; }
    /// With fields of a logger that the entry may not have.
    const Row* begin() const noexcept { return m_begin; }
    const Row* end() const noexcept { return m_end; }
    bool has(const Row& row) const noexcept { return (m_fields >> row.field & 1) != 0; }

    /// Appends the text of a row's value. Throws ResultException with RESULT_END_OF_FILE where it is null.
    void print(const Row& row, EntryText& text) const;

private:
    static constexpr std::size_t MOST = LogEntry::FEW + LogEntry::LOGGER_FIELD_COUNT;

    static constexpr Row rowOf(std::u16string_view name, LogEntry::LoggerField field, const Object* value) noexcept;

    /// The fields of a logger, the buckets from the last down.
    static const std::array<Row, LogEntry::LOGGER_FIELD_COUNT> OF_LOGGER;

    void addPlainFields();

    const LogEntry* m_entry = nullptr;
    std::uint32_t m_fields = 0; ///< a bit for each `LoggerField`
    const Row* m_begin = nullptr;
    const Row* m_end = nullptr;
    Row m_rows[MOST];
};

} // namespace vx::log::detail
