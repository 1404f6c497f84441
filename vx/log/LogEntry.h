#pragma once

#include "vx/Object.h"
#include "vx/Reference.h"
#include "vx/collections/StringHashMap.h"
#include "vx/log/ILogEntry.h"
#include "vx/log/vorb/ILogEntry.h"

namespace vx::log {

/// A log entry in both its faces. Field names are told apart by case.
class VX_API LogEntry : public Object, public ILogEntry, public vorb::ILogEntry {
public:
    /// Without a field.
    static Reference<LogEntry> create();

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
    LogEntry();

    collections::StringHashMap m_fields;
};

} // namespace vx::log
