#include "vx/log/LogEntry.h"

#include "vx/Exception.h"
#include "vx/Result.h"
#include "vx/String.h"
#include "vx/collections/Set.h"
#include "vx/detail/TextHash.h"
#include "vx/log/detail/FieldIterator.h"
#include "vx/log/detail/FieldOrder.h"
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
{
    m_fields.reserve(FEW / 2);
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
    Reference<Object> held(const_cast<Object*>(value)); // given out as constant only
    if (m_map == nullptr) {
        const std::u16string_view text = name.view();
        for (Field& field : m_fields) {
            if (field.name.view() == text) {
                field.value = std::move(held);
                return;
            }
        }
        if (m_fields.size() < FEW) {
            append(name, std::move(held));
            return;
        }
        m_map = createMap();
        m_fields.clear();
    }
    m_map->put(name, held.get());
}

Reference<const Object> LogEntry::getField(const String& name) const
{
    const Reference<Object> value = find(name.view());
    if (value == nullptr)
        throwResult(RESULT_END_OF_FILE);
    return value;
}

bool LogEntry::hasField(const String& name) const
{
    return find(name.view()) != nullptr;
}

Reference<const collections::Set<String>> LogEntry::getFieldNames() const
{
    return (m_map != nullptr ? m_map : createMap())->createKeySet();
}

void LogEntry::append(const String& name, Reference<Object> value)
{
    m_fields.emplace_back(name, std::move(value));
}

Reference<collections::StringHashMap> LogEntry::createMap() const
{
    Reference<collections::StringHashMap> map(new collections::StringHashMap(101, 0.75F));
    for (const Field& field : m_fields)
        map->put(field.name, field.value.get());
    return map;
}

Reference<Object> LogEntry::find(std::u16string_view name) const
{
    if (m_map != nullptr)
        return m_map->get(name.data(), static_cast<int>(name.size()));
    for (const Field& field : m_fields) {
        if (field.name.view() == name)
            return field.value;
    }
    return nullptr;
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
        const Reference<Object> value = find(name);
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
        isThere = find(name) != nullptr;
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

FieldOrder::FieldOrder(const ILogEntry& entry)
{
    constexpr std::uint32_t BUCKETS = 101;

    const auto* own = dynamic_cast<const LogEntry*>(&entry);
    if (own == nullptr || own->m_map != nullptr)
        return;
    m_isKnown = true;
    for (const LogEntry::Field& field : own->m_fields) {
        const std::u16string_view name = field.name.view();
        const std::uint32_t bucket = vx::detail::hashText(name.data(), static_cast<int>(name.size()), false) % BUCKETS;
        Row* place = m_rows + m_size++;
        for (; place > m_rows && place[-1].bucket < bucket; --place)
            *place = place[-1];
        *place = {bucket, &field.name, field.value.get()};
    }
}

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
