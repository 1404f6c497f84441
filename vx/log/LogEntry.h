#pragma once

#include "vx/Object.h"
#include "vx/Reference.h"
#include "vx/String.h"
#include "vx/collections/StringHashMap.h"
#include "vx/log/ILogEntry.h"
#include "vx/log/vorb/ILogEntry.h"
#include "vxsys/Memory.h"

#include <cstddef>
#include <string_view>
#include <utility>
#include <vector>

namespace vx::log {

namespace detail {
class FieldOrder;
}

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

    LogEntry();

    /// For a name that is not there yet, while there are few.
    void append(const String& name, Reference<Object> value);
    Reference<collections::StringHashMap> createMap() const;
    /// Null where there is none.
    Reference<Object> find(std::u16string_view name) const;

    /// In the order of setting. An entry lives for a moment: a map with its buckets would cost more than all else in it.
    std::vector<Field, vxsys::Allocator<Field>> m_fields;
    Reference<collections::StringHashMap> m_map; ///< instead of `m_fields` once these are no longer few
};

} // namespace vx::log
