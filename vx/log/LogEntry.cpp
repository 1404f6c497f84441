#include "vx/log/LogEntry.h"

#include "vx/Exception.h"
#include "vx/NumberBoxes.h"
#include "vx/Result.h"
#include "vx/collections/Set.h"
#include "vx/collections/StringHashMap.h"
#include "vx/detail/HashOrder.h"
#include "vx/detail/StringLocks.h"
#include "vx/detail/TextHash.h"
#include "vx/log/TimeStamp.h"
#include "vx/log/detail/FieldIterator.h"
#include "vx/util/CopyCharBuffer.h"
#include "vx/vorb/Boundary.h"

#include <algorithm>
#include <iterator>
#include <limits>
#include <memory>

namespace vx::log {

namespace {

constexpr std::uint32_t hashOf(std::u16string_view name) noexcept
{
    return vx::detail::hashText(name.data(), static_cast<int>(name.size()), false);
}

/// In a map that has not grown.
constexpr std::uint8_t bucketOf(std::uint32_t hash) noexcept
{
    constexpr vx::detail::HashOrder<> ORDER;
    static_assert(ORDER.capacity() <= std::numeric_limits<std::uint8_t>::max());
    return static_cast<std::uint8_t>(ORDER.bucketOf(hash));
}

/// A name as components give it.
std::u16string_view checked(const char16_t* name)
{
    if (name == nullptr)
        throwResult(RESULT_INVALID_ARGUMENT);
    return name;
}

} // namespace

constexpr std::array<LogEntry::LoggerFieldRow, LogEntry::LOGGER_FIELD_COUNT> LogEntry::LOGGER_FIELDS = [] {
    constexpr std::u16string_view NAMES[] = {u"sequence", u"thread", u"name", u"timestamp", u"level", u"text"};
    std::array<LoggerFieldRow, LOGGER_FIELD_COUNT> rows {};
    static_assert(std::size(NAMES) == rows.size());
    std::ranges::transform(NAMES, rows.begin(), [](std::u16string_view name) -> LoggerFieldRow {
        return {name, hashOf(name), bucketOf(hashOf(name))};
    });
    return rows;
}();

LogEntry::Field::Field(Field&& other) noexcept
    : loggerField(other.loggerField)
    , bucket(other.bucket)
    , ownName(other.ownName)
    , hash(other.hash)
    , plain(other.plain)
    , object(other.object.exchange(nullptr, std::memory_order_relaxed))
{
}

LogEntry::LogEntry() noexcept = default;

LogEntry::~LogEntry() noexcept
{
    for (std::size_t place = 0; place < m_count; ++place) {
        if (Object* held = at(place).object.load(std::memory_order_relaxed))
            Reference<Object>().attach(held);
    }
}

Reference<LogEntry> LogEntry::create()
{
    Reference<LogEntry> entry;
    auto* const fresh = new LogEntry;
    fresh->setFirstReference();
    entry.attach(fresh);
    return entry;
}

const vx::vorb::InterfaceData* LogEntry::GetComIntfMap()
{
    static const vx::vorb::InterfaceData map[]
        = {vx::vorb::viewRow<LogEntry, vorb::ILogEntry>(), vx::vorb::forwardRow<Object>(), vx::vorb::endRow()};
    return map;
}

void LogEntry::addText(LoggerField field, const String& text)
{
    constexpr std::size_t MOST_UNITS = 256; // longer texts, and those in a buffer with a lock, are shared, not copied

    std::u16string_view units;
    if (vx::detail::PlainBuffer::read(text, &units) && units.size() <= MOST_UNITS) {
        add(field, keep(units));
        return;
    }
    Reference<Object> shared(new String(text));
    add(field, {}).object.store(shared.detach(), std::memory_order_relaxed);
}

LogEntry::Field& LogEntry::append(std::u16string_view name, std::uint32_t hash)
{
    const Piece ownName = keep(name);
    if (m_count >= FEW && m_more.size() == m_more.capacity())
        m_more.reserve(2 * m_more.size() + FEW);
    if (m_count >= MOST_WITHOUT_INDEX)
        addToIndex(name);
    // nothing below fails
    Field& field = m_count < FEW ? *std::construct_at(&m_few.fields[m_count]) : m_more.emplace_back();
    ++m_count;
    field.ownName = ownName;
    field.hash = hash;
    field.bucket = bucketOf(hash);
    return field;
}

LogEntry::Piece LogEntry::keep(std::u16string_view text)
{
    const Piece piece {static_cast<std::uint32_t>(m_units.length()), static_cast<std::uint32_t>(text.size())};
    m_units.append(text);
    return piece;
}

void LogEntry::addToIndex(std::u16string_view name)
{
    if (m_index == nullptr) {
        auto index = std::make_unique<Index>();
        for (std::size_t place = 0; place < m_count; ++place)
            index->emplace(String(nameOf(at(place))), place);
        m_index = std::move(index);
    }
    m_index->emplace(String(name), m_count);
}

std::int64_t LogEntry::estimateBytes(const log::ILogEntry& entry)
{
    constexpr std::int64_t BYTES_OF_A_FIELD = 64; // with its name's String, and an object of average size
    std::int64_t units = 0;
    const auto addText = [&units](const Object* value) {
        if (const auto* const text = dynamic_cast<const String*>(value))
            units += text->getLength();
    };
    if (const auto* const own = dynamic_cast<const LogEntry*>(&entry)) {
        units = own->m_units.length();
        for (std::size_t place = 0; place < own->m_count; ++place)
            addText(own->at(place).object.load(std::memory_order_acquire));
        return static_cast<std::int64_t>(sizeof(LogEntry) + own->m_more.capacity() * sizeof(Field)) + 2 * units;
    }
    const auto names = entry.getFieldNames();
    for (const Reference<String>& name : *names) {
        units += name->getLength();
        if (entry.hasField(*name))
            addText(entry.getField(*name).get());
    }
    return BYTES_OF_A_FIELD * names->getSize() + 2 * units;
}

const LogEntry::Field* LogEntry::find(std::u16string_view name) const
{
    if (m_index != nullptr) {
        const auto found = m_index->find(name);
        return found != m_index->end() ? &at(found->second) : nullptr;
    }
    const std::uint32_t hash = hashOf(name);
    for (std::size_t place = 0; place < m_count; ++place) {
        const Field& field = at(place);
        if (field.hash == hash && nameOf(field) == name)
            return &field;
    }
    return nullptr;
}

bool LogEntry::hasValue(std::u16string_view name) const
{
    const Field* const field = find(name);
    return field != nullptr && !field->isNull();
}

Reference<Object> LogEntry::valueOf(std::u16string_view name) const
{
    const Field* const field = find(name);
    if (field == nullptr)
        return nullptr;
    Object* value = field->object.load(std::memory_order_acquire);
    if (value != nullptr || std::holds_alternative<std::monostate>(field->plain))
        return Reference<Object>(value);
    Reference<Object> made = makeValue(field->plain);
    // If two threads create the object at the same time, both get the one that was stored first.
    if (!field->object.compare_exchange_strong(value, made.get(), std::memory_order_acq_rel, std::memory_order_acquire))
        return Reference<Object>(value);
    static_cast<void>(Reference<Object>(made).detach()); // the field owns this reference
    return made;
}

Reference<Object> LogEntry::makeValue(const Plain& plain) const
{
    struct {
        Object* operator()(std::monostate) const { return nullptr; }
        Object* operator()(std::int32_t number) const { return new Integer32(number); }
        Object* operator()(std::uint32_t number) const { return new UInteger32(number); }
        Object* operator()(const STRUCT_VX_TIME& time) const { return new TimeStamp(time); }
        Object* operator()(const ZonedTime& time) const { return new ZonedTimeStamp(time); }
        Object* operator()(Piece piece) const { return new String(entry.textOf(piece)); }
        const LogEntry& entry;
    } maker {*this};
    return Reference<Object>(std::visit(maker, plain));
}

namespace detail {

const LogEntry& LogEntryFace::self() const noexcept
{
    return static_cast<const LogEntry&>(*this);
}

void LogEntryFace::setField(const String& name, const Object* value)
{
    Reference<Object> held(const_cast<Object*>(value)); // callers get it as constant only
    auto& entry = static_cast<LogEntry&>(*this);
    const std::u16string_view text = name.view();
    const LogEntry::Field* const found = entry.find(text);
    auto& field = found != nullptr ? const_cast<LogEntry::Field&>(*found) : entry.append(text, hashOf(text));
    field.plain = {};
    held.attach(field.object.exchange(held.detach(), std::memory_order_relaxed));
}

Reference<const Object> LogEntryFace::getField(const String& name) const
{
    const Reference<Object> value = self().valueOf(name.view());
    if (value == nullptr)
        throwResult(RESULT_END_OF_FILE);
    return value;
}

bool LogEntryFace::hasField(const String& name) const
{
    return self().hasValue(name.view());
}

Reference<const collections::Set<String>> LogEntryFace::getFieldNames() const
{
    collections::StringHashMap map;
    for (std::size_t place = 0; place < self().m_count; ++place)
        map.put(self().nameOf(self().at(place)), nullptr);
    return map.createKeySet();
}

std::int32_t LogEntryFace::SetField(const char16_t* name, IVXUnknown* value)
{
    return vx::vorb::atBoundary([&] {
        const String text(checked(name));
        const auto* object = dynamic_cast<const Object*>(value);
        if (object == nullptr)
            throwResult(RESULT_FAIL);
        setField(text, object);
    });
}

std::int32_t LogEntryFace::GetField(const char16_t* name, const _GUID& iid, void** out) const
{
    if (out == nullptr)
        return RESULT_POINTER;
    *out = nullptr;
    return vx::vorb::resultAtBoundary([&] {
        const Reference<Object> value = self().valueOf(checked(name));
        return value != nullptr ? value->QueryInterface(iid, out) : RESULT_FAIL;
    });
}

std::int32_t LogEntryFace::HasField(const char16_t* name) const
{
    return vx::vorb::resultAtBoundary([&] { return self().hasValue(checked(name)) ? RESULT_OK : RESULT_FALSE; });
}

std::int32_t LogEntryFace::GetFieldIterator(vorb::IFieldIterator** out) const
{
    return vx::vorb::atBoundary(out, [&]() -> vorb::IFieldIterator* {
        return Reference<FieldIterator>(new FieldIterator(*getFieldNames())).detach();
    });
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
