#pragma once

#include "vx/Object.h"
#include "vx/Reference.h"
#include "vx/String.h"
#include "vx/collections/StringHashMap.h"
#include "vx/log/ILogEntry.h"
#include "vx/log/vorb/ILogEntry.h"
#include "vxsys/Memory.h"
#include "vxsys/Time.h"

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <utility>
#include <vector>

namespace vx::log {

namespace detail {
class EntryText;
class FieldOrder;
} // namespace detail

/// A log entry in both its faces. Field names are told apart by case.
class VX_API LogEntry : public Object, public ILogEntry, public vorb::ILogEntry {
public:
    /// Without a field.
    static Reference<LogEntry> create();
    LogEntry(const LogEntry&) = delete;
    LogEntry& operator=(const LogEntry&) = delete;

    VX_OBJECT_UNKNOWN(Object)
    static const vx::vorb::InterfaceData* GetComIntfMap();
    ~LogEntry() noexcept override;

    // ILogEntry
    void setField(const String& name, const Object* value) override;
    Reference<const Object> getField(const String& name) const override;
    bool hasField(const String& name) const override;
    Reference<const collections::Set<String>> getFieldNames() const override;

    // vorb::ILogEntry
    std::int32_t SetField(const char16_t* name, IVXUnknown* value) override;
    std::int32_t GetField(const char16_t* name, const _GUID& iid, void** out) const override;
    std::int32_t HasField(const char16_t* name) const override;
    std::int32_t GetFieldIterator(vorb::IFieldIterator** out) const override;

private:
    friend class Logger;
    friend class detail::FieldOrder;

    struct Field {
        Field(const String& fieldName, Reference<Object>&& fieldValue) noexcept
            : name(fieldName)
            , value(std::move(fieldValue))
        {
        }

        String name;
        Reference<Object> value;
    };

    static constexpr std::size_t FEW = 12;

    /// The fields that a logger sets, in the order of its switches.
    enum LoggerField : std::uint8_t { SEQUENCE, THREAD, NAME, TIMESTAMP, LEVEL, TEXT, LOGGER_FIELD_COUNT };
    static constexpr LoggerField ORDER_OF_SETTING[] = {LEVEL, TEXT, SEQUENCE, THREAD, TIMESTAMP, NAME};
    static const std::array<STRUCT_VX_STR_LIT_INFO, LOGGER_FIELD_COUNT> LOGGER_FIELD_NAMES;

    /// What a logger tells of an entry. Only what belongs to the fields that are there has a meaning.
    struct Facts {
        std::uint32_t fields = 0; ///< a bit for each `LoggerField`
        std::int32_t level = 0;
        std::int32_t sequence = 0;
        std::uint32_t thread = 0;
        STRUCT_VX_TIME time {};

        bool has(LoggerField field) const noexcept { return (fields >> field & 1) != 0; }
    };

    struct Room {
        std::size_t units;
    };

    LogEntry() noexcept = default;
    explicit LogEntry(const Facts& facts) noexcept;
    static void* operator new(std::size_t bytes, Room room);
    static void operator delete(void* memory, Room room) noexcept;
    using Object::operator delete;
    using Object::operator new;

    /// With the fields that `facts` tells of; `text` and `name` are the values of two of them.
    static Reference<LogEntry> create(const Facts& facts, const String& text, const String& name);
    std::u16string_view unitsOf(LoggerField field) const noexcept;
    static bool isOfLogger(std::u16string_view name) noexcept;

    /// The value of a logger's field that is there, made when somebody asks for it. Not counted.
    Object* valueOf(LoggerField field) const;
    Reference<Object> makeValue(LoggerField field) const;
    /// Makes plain fields of those of a logger.
    void spread();
    void dropValues() noexcept;
    Reference<collections::StringHashMap> createMap() const;
    /// Null where there is none.
    Reference<Object> find(std::u16string_view name) const;

    // An entry lives for a moment, and most are only ever printed: a map with its buckets, or an object for each value,
    // would cost more than all else in it.
    Facts m_facts;
    // The units of TEXT, then those of NAME, stand behind the entry in its memory.
    std::uint32_t m_textUnits = 0;
    std::uint32_t m_nameUnits = 0;
    mutable std::array<std::atomic<Object*>, LOGGER_FIELD_COUNT> m_values {}; ///< counted; null: not made yet
    mutable std::atomic<bool> m_hasValues {false};
    /// The fields that others set, in the order of setting.
    std::vector<Field, vxsys::Allocator<Field>> m_fields;
    Reference<collections::StringHashMap> m_map; ///< instead of all that once these are no longer few
};

} // namespace vx::log
