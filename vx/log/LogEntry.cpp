#include "vx/log/LogEntry.h"

#include "vx/Exception.h"
#include "vx/Result.h"
#include "vx/String.h"
#include "vx/collections/Set.h"
#include "vx/log/detail/FieldIterator.h"
#include "vx/util/CopyCharBuffer.h"
#include "vx/vorb/Boundary.h"

namespace vx::log {

namespace {

void checkName(const char16_t* name)
{
    if (name == nullptr)
        throwResult(RESULT_INVALID_ARGUMENT);
}

} // namespace

LogEntry::LogEntry()
    : m_fields(101, 0.75F)
{
}

Reference<LogEntry> LogEntry::create()
{
    return new LogEntry;
}

const vx::vorb::InterfaceData* LogEntry::GetComIntfMap()
{
    static const vx::vorb::InterfaceData map[]
        = {vx::vorb::viewRow<LogEntry, vorb::ILogEntry>(), vx::vorb::forwardRow<Object>(), vx::vorb::endRow()};
    return map;
}

LogEntry::~LogEntry() noexcept = default;

void LogEntry::setField(const String& name, const Object* value)
{
    m_fields.put(name, const_cast<Object*>(value)); // given out as constant only
}

Reference<const Object> LogEntry::getField(const String& name) const
{
    const Reference<Object> value = m_fields.get(name);
    if (value == nullptr)
        throwResult(RESULT_END_OF_FILE);
    return value;
}

bool LogEntry::hasField(const String& name) const
{
    return m_fields.containsKey(name);
}

Reference<const collections::Set<String>> LogEntry::getFieldNames() const
{
    return m_fields.createKeySet();
}

std::int32_t LogEntry::SetField(const char16_t* name, IVXUnknown* value)
{
    return vx::vorb::atBoundary([&] {
        checkName(name);
        const auto* object = dynamic_cast<const Object*>(value);
        if (object == nullptr)
            throwResult(RESULT_FAIL);
        setField(name, object);
    });
}

std::int32_t LogEntry::GetField(const char16_t* name, const _GUID& iid, void** out) const
{
    if (out == nullptr)
        return RESULT_POINTER;
    *out = nullptr;
    return vx::vorb::atBoundary([&] {
        checkName(name);
        const Reference<Object> value = m_fields.get(name, -1);
        if (value == nullptr)
            throwResult(RESULT_FAIL);
        throwIfFailed(value->QueryInterface(iid, out));
    });
}

std::int32_t LogEntry::HasField(const char16_t* name) const
{
    bool isThere = false;
    const std::int32_t result = vx::vorb::atBoundary([&] {
        checkName(name);
        isThere = m_fields.containsKey(name, -1);
    });
    return failed(result) || isThere ? result : RESULT_FALSE;
}

std::int32_t LogEntry::GetFieldIterator(vorb::IFieldIterator** out) const
{
    return vx::vorb::atBoundary(out, [&]() -> vorb::IFieldIterator* {
        return Reference<detail::FieldIterator>(new detail::FieldIterator(*getFieldNames())).detach();
    });
}

namespace detail {

FieldIterator::FieldIterator(const collections::Set<String>& names)
    : m_names(names.createConstIterator())
{
}

const vx::vorb::InterfaceData* FieldIterator::GetComIntfMap()
{
    static const vx::vorb::InterfaceData map[] = {
        vx::vorb::viewRow<FieldIterator, vorb::IFieldIterator>(), vx::vorb::forwardRow<Object>(), vx::vorb::endRow()};
    return map;
}

FieldIterator::~FieldIterator() noexcept = default;

std::int32_t FieldIterator::HasNext()
{
    bool hasNext = false;
    const std::int32_t result = vx::vorb::atBoundary([&] { hasNext = m_names->hasNext(); });
    return failed(result) || hasNext ? result : RESULT_FALSE;
}

std::int32_t FieldIterator::Next(IVXCharBuffer* out)
{
    return vx::vorb::atBoundary([&] {
        const Reference<String> name = m_names->next();
        VXCopyCharBuffer(out, name.get());
    });
}

} // namespace detail

} // namespace vx::log
