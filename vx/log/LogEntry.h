#pragma once

#include "vx/Object.h"
#include "vx/Reference.h"
#include "vx/String.h"
#include "vx/detail/TextBuilder.h"
#include "vx/log/ILogEntry.h"
#include "vx/log/ZonedTimeStamp.h"
#include "vx/log/vorb/ILogEntry.h"
#include "vxsys/Memory.h"
#include "vxsys/Time.h"

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string_view>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

namespace vx::log {

class LogEntry;

namespace detail {

class EntryQueue;
class FieldOrder;
class LoggerFace;

/// The interfaces of `LogEntry`. A separate base, so that their operations take no virtual table slots among those of
/// the class. A derived entry cannot override them: the writers read the fields directly.
class VX_API LogEntryFace : public ILogEntry, public vorb::ILogEntry {
public:
    // ILogEntry
    void setField(const String& name, const Object* value) final;
    Reference<const Object> getField(const String& name) const final;
    bool hasField(const String& name) const final;
    Reference<const collections::Set<String>> getFieldNames() const final;

    // vorb::ILogEntry
    std::int32_t SetField(const char16_t* name, IVXUnknown* value) final;
    std::int32_t GetField(const char16_t* name, const _GUID& iid, void** out) const final;
    std::int32_t HasField(const char16_t* name) const final;
    std::int32_t GetFieldIterator(vorb::IFieldIterator** out) const final;

protected:
    LogEntryFace() = default;
    ~LogEntryFace() = default;

private:
    const LogEntry& self() const noexcept;
};

} // namespace detail

/// A log entry for class code and for components. Field names are case-sensitive.
class VX_API LogEntry : public Object, public detail::LogEntryFace {
public:
    /// An entry without fields.
    static Reference<LogEntry> create();
    LogEntry(const LogEntry&) = delete;
    LogEntry& operator=(const LogEntry&) = delete;

    VX_OBJECT_UNKNOWN(Object)
    static const vx::vorb::InterfaceData* GetComIntfMap();
    ~LogEntry() noexcept override;

protected:
    /// For derived entries, which hold more than the fields.
    LogEntry() noexcept;

private:
    friend class Logger;
    friend class detail::EntryQueue;
    friend class detail::FieldOrder;
    friend class detail::LogEntryFace;
    friend class detail::LoggerFace;

    /// The fields that a logger sets, in the order of its switches.
    enum LoggerField : std::uint8_t { SEQUENCE, THREAD, NAME, TIMESTAMP, LEVEL, TEXT, LOGGER_FIELD_COUNT };
    struct LoggerFieldRow {
        std::u16string_view name;
        std::uint32_t hash;
        std::uint8_t bucket;
    };
    static const std::array<LoggerFieldRow, LOGGER_FIELD_COUNT> LOGGER_FIELDS;

    /// A part of `m_units`.
    struct Piece {
        std::uint32_t start = 0;
        std::uint32_t length = 0;
    };
    /// The value of a logger's field, which becomes an object only when a caller requests it. Empty for all other
    /// fields.
    using Plain = std::variant<std::monostate, std::int32_t, std::uint32_t, STRUCT_VX_TIME, ZonedTime, Piece>;
    struct Field {
        Field() noexcept = default;
        Field(Field&& other) noexcept;

        bool isNull() const noexcept
        {
            return std::holds_alternative<std::monostate>(plain) && object.load(std::memory_order_relaxed) == nullptr;
        }

        LoggerField loggerField = LOGGER_FIELD_COUNT; ///< decides the name
        std::uint8_t bucket = 0; ///< of the hash in a map of few names, which decides the order
        Piece ownName; ///< the name of a field that no logger sets
        std::uint32_t hash = 0; ///< of the name
        Plain plain;
        mutable std::atomic<Object*> object {nullptr}; ///< holds a reference, which the entry releases
    };
    /// Maps names to the positions of fields.
    using Index = std::map<String, std::size_t, std::less<>, vxsys::Allocator<std::pair<const String, std::size_t>>>;

    /// For fields that the entry does not have yet; those of a logger come first.
    inline Field& add(LoggerField field, const Plain& value);
    void addText(LoggerField field, const String& text);
    Field& append(std::u16string_view name, std::uint32_t hash);
    void addToIndex(std::u16string_view name);

    Field& at(std::size_t place) noexcept { return place < FEW ? m_few.fields[place] : m_more[place - FEW]; }
    const Field& at(std::size_t place) const noexcept { return const_cast<LogEntry&>(*this).at(place); }
    std::u16string_view textOf(Piece piece) const noexcept { return m_units.view().substr(piece.start, piece.length); }
    std::u16string_view nameOf(const Field& field) const noexcept
    {
        const bool isOwn = field.loggerField == LOGGER_FIELD_COUNT;
        return isOwn ? textOf(field.ownName) : LOGGER_FIELDS[field.loggerField].name;
    }
    /// Appends the text to `m_units`.
    Piece keep(std::u16string_view text);

    /// The memory that an entry of any class takes, from the lengths of its names and texts.
    static std::int64_t estimateBytes(const log::ILogEntry& entry);

    /// Null if there is no field of that name.
    const Field* find(std::u16string_view name) const;
    bool hasValue(std::u16string_view name) const;
    /// The value as an object, which is created at the first call. Null for no field, and for a field whose value is
    /// null.
    Reference<Object> valueOf(std::u16string_view name) const;
    Reference<Object> makeValue(const Plain& plain) const;

    // Entries are short-lived, and most are only printed. A map with its buckets, or an object for each value, would
    // cost more than everything else in the entry.
    static constexpr std::size_t FEW = LOGGER_FIELD_COUNT;
    static constexpr std::size_t MOST_WITHOUT_INDEX = 32;
    /// Storage whose fields are constructed one by one: most entries have two of them.
    union FewFields {
        FewFields() noexcept { } // NOLINT(modernize-use-equals-default): Field has a constructor
        ~FewFields() = default;
        Field fields[FEW];
    };
    static_assert(std::is_trivially_destructible_v<Field>);
    std::size_t m_count = 0;
    FewFields m_few; ///< the first fields, in the order of setting
    std::vector<Field, vxsys::Allocator<Field>> m_more; ///< the others
    std::unique_ptr<Index> m_index; ///< of all fields, once there are many
    vx::detail::ShortTextBuilder<128> m_units; ///< names that no logger sets, and the texts of a logger
};

inline auto LogEntry::add(LoggerField field, const Plain& value) -> Field&
{
    Field& added = *std::construct_at(&m_few.fields[m_count++]);
    added.loggerField = field;
    added.hash = LOGGER_FIELDS[field].hash;
    added.bucket = LOGGER_FIELDS[field].bucket;
    added.plain = value;
    return added;
}

} // namespace vx::log
