#include "vx/log/LogEntry.h"

#include "vx/Exception.h"
#include "vx/NumberBoxes.h"
#include "vx/Result.h"
#include "vx/String.h"
#include "vx/collections/Set.h"
#include "vx/detail/StringLocks.h"
#include "vx/detail/TextHash.h"
#include "vx/log/TimeStamp.h"
#include "vx/log/detail/EntryText.h"
#include "vx/log/detail/FieldIterator.h"
#include "vx/log/detail/FieldOrder.h"
#include "vx/util/CopyCharBuffer.h"
#include "vx/vorb/Boundary.h"

#include <algorithm>
#include <cstring>
#include <type_traits>

namespace vx::log {

namespace {

void checkName(const char16_t* name)
{
    if (name == nullptr)
        throwResult(RESULT_INVALID_ARGUMENT);
}

constexpr std::u16string_view nameOf(const STRUCT_VX_STR_LIT_INFO& row) noexcept
{
    return {row.text, static_cast<std::size_t>(row.length)};
}

} // namespace

constexpr std::array<STRUCT_VX_STR_LIT_INFO, LogEntry::LOGGER_FIELD_COUNT> LogEntry::LOGGER_FIELD_NAMES
    = {literal(u"sequence"), literal(u"thread"), literal(u"name"), literal(u"timestamp"), literal(u"level"),
        literal(u"text")};

LogEntry::LogEntry(const Facts& facts) noexcept
    : m_facts(facts)
{
}

void* LogEntry::operator new(std::size_t bytes, Room room)
{
    static_assert(alignof(LogEntry) >= alignof(char16_t));
    return vxsys::allocate(bytes + room.units * sizeof(char16_t));
}

void LogEntry::operator delete(void* memory, Room) noexcept
{
    vxsys::deallocate(memory);
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

LogEntry::~LogEntry() noexcept
{
    dropValues();
}

void LogEntry::setField(const String& name, const Object* value)
{
    Reference<Object> held(const_cast<Object*>(value)); // given out as constant only
    if (m_map == nullptr) {
        const std::u16string_view text = name.view();
        if (m_facts.fields != 0 && (isOfLogger(text) || m_fields.size() + LOGGER_FIELD_COUNT >= FEW))
            spread();
        for (Field& field : m_fields) {
            if (field.name.view() == text) {
                field.value = std::move(held);
                return;
            }
        }
        if (m_fields.size() < FEW) {
            if (m_fields.empty())
                m_fields.reserve(FEW / 2);
            m_fields.emplace_back(name, std::move(held));
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

Reference<LogEntry> LogEntry::create(const Facts& facts, const String& text, const String& name)
{
    // Longer ones, and those in a buffer with a lock of its own, are shared.
    constexpr std::size_t MOST_UNITS = 256;
    const auto isCopied = [&](LoggerField field, const String& value, std::u16string_view* units) {
        if (!facts.has(field))
            return true;
        if (vx::detail::PlainBuffer::read(value, units) && units->size() <= MOST_UNITS)
            return true;
        *units = {};
        return false;
    };
    std::u16string_view textUnits;
    std::u16string_view nameUnits;
    const bool isTextCopied = isCopied(TEXT, text, &textUnits);
    const bool isNameCopied = isCopied(NAME, name, &nameUnits);

    Reference<LogEntry> entry(new (Room {textUnits.size() + nameUnits.size()}) LogEntry(facts));
    entry->m_textUnits = static_cast<std::uint32_t>(textUnits.size());
    entry->m_nameUnits = static_cast<std::uint32_t>(nameUnits.size());
    auto* const room = reinterpret_cast<char16_t*>(entry.get() + 1);
    textUnits.copy(room, textUnits.size());
    nameUnits.copy(room + textUnits.size(), nameUnits.size());
    const auto share = [&](LoggerField field, const String& value) {
        entry->m_values[field] = Reference<Object>(new String(value)).detach();
        entry->m_hasValues = true;
    };
    if (!isTextCopied)
        share(TEXT, text);
    if (!isNameCopied)
        share(NAME, name);
    return entry;
}

std::u16string_view LogEntry::unitsOf(LoggerField field) const noexcept
{
    const auto* const room = reinterpret_cast<const char16_t*>(this + 1);
    return field == TEXT ? std::u16string_view(room, m_textUnits)
                         : std::u16string_view(room + m_textUnits, m_nameUnits);
}

bool LogEntry::isOfLogger(std::u16string_view name) noexcept
{
    return std::any_of(LOGGER_FIELD_NAMES.begin(), LOGGER_FIELD_NAMES.end(),
        [&](const STRUCT_VX_STR_LIT_INFO& row) { return nameOf(row) == name; });
}

Object* LogEntry::valueOf(LoggerField field) const
{
    std::atomic<Object*>& place = m_values[field];
    Object* value = place.load(std::memory_order_acquire);
    if (value != nullptr)
        return value;
    Reference<Object> made = makeValue(field);
    // Of two threads that ask first, one has made it in vain.
    if (place.compare_exchange_strong(value, made.get(), std::memory_order_acq_rel, std::memory_order_acquire)) {
        value = made.detach();
        m_hasValues.store(true, std::memory_order_relaxed);
    }
    return value;
}

Reference<Object> LogEntry::makeValue(LoggerField field) const
{
    switch (field) {
    case SEQUENCE:
        return Reference<Object>(new Integer32(m_facts.sequence));
    case THREAD:
        return Reference<Object>(new UInteger32(m_facts.thread));
    case TIMESTAMP:
        return Reference<Object>(new TimeStamp(m_facts.time));
    case LEVEL:
        return Reference<Object>(new Integer32(m_facts.level));
    default:
        return Reference<Object>(new String(unitsOf(field)));
    }
}

void LogEntry::spread()
{
    decltype(m_fields) all;
    all.reserve(FEW);
    for (const LoggerField field : ORDER_OF_SETTING) {
        if (m_facts.has(field))
            all.emplace_back(LOGGER_FIELD_NAMES[field], Reference<Object>(valueOf(field)));
    }
    all.insert(all.end(), m_fields.begin(), m_fields.end());
    m_fields.swap(all);
    m_facts.fields = 0;
    dropValues();
}

void LogEntry::dropValues() noexcept
{
    if (!m_hasValues.load(std::memory_order_relaxed))
        return;
    for (std::atomic<Object*>& value : m_values)
        Reference<Object>().attach(value.exchange(nullptr, std::memory_order_relaxed));
    m_hasValues = false;
}

Reference<collections::StringHashMap> LogEntry::createMap() const
{
    Reference<collections::StringHashMap> map(new collections::StringHashMap(101, 0.75F));
    for (const LoggerField field : ORDER_OF_SETTING) {
        if (m_facts.has(field))
            map->put(LOGGER_FIELD_NAMES[field], valueOf(field));
    }
    for (const Field& field : m_fields)
        map->put(field.name, field.value.get());
    return map;
}

Reference<Object> LogEntry::find(std::u16string_view name) const
{
    if (m_map != nullptr)
        return m_map->get(name.data(), static_cast<int>(name.size()));
    for (const LoggerField field : ORDER_OF_SETTING) {
        if (m_facts.has(field) && nameOf(LOGGER_FIELD_NAMES[field]) == name)
            return valueOf(field);
    }
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

namespace {

constexpr std::uint32_t bucketOf(std::u16string_view name) noexcept
{
    constexpr std::uint32_t BUCKETS = 101;
    return vx::detail::hashText(name.data(), static_cast<int>(name.size()), false) % BUCKETS;
}

} // namespace

constexpr FieldOrder::Row FieldOrder::rowOf(
    std::u16string_view name, LogEntry::LoggerField field, const Object* value) noexcept
{
    return {bucketOf(name), field, name.data(), name.size(), value};
}

constexpr std::array<FieldOrder::Row, LogEntry::LOGGER_FIELD_COUNT> FieldOrder::OF_LOGGER = [] {
    std::array<Row, LogEntry::LOGGER_FIELD_COUNT> rows {};
    for (std::size_t index = 0; index < rows.size(); ++index) {
        const LogEntry::LoggerField field = LogEntry::ORDER_OF_SETTING[index];
        rows[index] = rowOf(nameOf(LogEntry::LOGGER_FIELD_NAMES[field]), field, nullptr);
    }
    std::sort(rows.begin(), rows.end(), [](const Row& left, const Row& right) { return left.bucket > right.bucket; });
    return rows;
}();

FieldOrder::FieldOrder(const ILogEntry& entry)
{
    static_assert(
        std::ranges::adjacent_find(OF_LOGGER, {}, &Row::bucket) == OF_LOGGER.end(), "which is older does not matter");
    if (!vx::detail::isExactly<LogEntry>(entry))
        return;
    const auto& own = static_cast<const LogEntry&>(entry);
    if (own.m_map != nullptr)
        return;
    m_entry = &own;
    m_fields = own.m_facts.fields | 1U << LogEntry::LOGGER_FIELD_COUNT;
    m_begin = OF_LOGGER.data();
    m_end = m_begin + OF_LOGGER.size();
    if (!own.m_fields.empty())
        addPlainFields();
}

void FieldOrder::addPlainFields()
{
    Row* end = std::copy(m_begin, m_end, m_rows);
    for (const LogEntry::Field& field : m_entry->m_fields) {
        const Row row = rowOf(field.name.view(), LogEntry::LOGGER_FIELD_COUNT, field.value.get());
        Row* place = end++;
        for (; place > m_rows && place[-1].bucket < row.bucket; --place)
            *place = place[-1];
        *place = row;
    }
    m_begin = m_rows;
    m_end = end;
}

void FieldOrder::print(const Row& row, EntryText& text) const
{
    const bool isOfLogger = row.field != LogEntry::LOGGER_FIELD_COUNT;
    const Object* value = row.value;
    if (isOfLogger)
        value = m_entry->m_values[row.field].load(std::memory_order_acquire);
    if (value != nullptr)
        return text.append(value->toString().view());

    // What `toString` of the value would give, without making it.
    const LogEntry::Facts& facts = m_entry->m_facts;
    switch (row.field) {
    case LogEntry::SEQUENCE:
        return text.appendNumber(facts.sequence);
    case LogEntry::THREAD:
        return text.appendNumber(facts.thread);
    case LogEntry::TIMESTAMP:
        return text.append(TimeStamp(facts.time).toString().view());
    case LogEntry::LEVEL:
        return text.appendNumber(facts.level);
    case LogEntry::NAME:
    case LogEntry::TEXT:
        return text.append(m_entry->unitsOf(row.field));
    case LogEntry::LOGGER_FIELD_COUNT:
        throwResult(RESULT_END_OF_FILE); // as `getField` does
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
