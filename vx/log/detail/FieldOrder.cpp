#include "vx/log/detail/FieldOrder.h"

#include "vx/Exception.h"
#include "vx/Number.h"
#include "vx/Result.h"
#include "vx/collections/Set.h"
#include "vx/detail/HashOrder.h"
#include "vx/log/TimeStamp.h"
#include "vx/log/detail/Utf8Builder.h"
#include "vx/log/detail/WholeText.h"

#include <cstddef>
#include <cstring>

namespace vx::log::detail {

namespace {

/// The text of the second in which the thread last printed a time. Most entries share it with the one before.
struct SecondText {
    static constexpr std::size_t MOST_UNITS = 48;

    STRUCT_VX_TIME second; ///< the milliseconds do not count
    std::size_t length;
    char16_t units[MOST_UNITS];
};
constinit thread_local SecondText s_lastSecond {};

/// Appends `TimeStamp::toString`, which has no milliseconds. A change of the locale takes effect in the next second.
template <class Builder>
void printTime(const STRUCT_VX_TIME& time, Builder& text)
{
    SecondText& last = s_lastSecond;
    if (last.length == 0 || std::memcmp(&time, &last.second, offsetof(STRUCT_VX_TIME, milliseconds)) != 0) {
        const String made = TimeStamp(time).toString();
        const std::u16string_view units = made.view();
        if (units.size() > SecondText::MOST_UNITS)
            return text.append(units);
        last.second = time;
        last.length = units.copy(last.units, SecondText::MOST_UNITS);
    }
    text.append({last.units, last.length});
}

void printTime(const ZonedTime& time, Utf8Builder& text)
{
    vx::detail::ShortTextBuilder<64> units;
    log::detail::printTime(time, units);
    text.append(units.view());
}

using log::detail::printTime; // NOLINT(misc-unused-using-decls): used in a template

} // namespace

FieldOrder::FieldOrder(const LogEntry& entry)
    : m_entry(entry)
{
    if (entry.m_count <= FEW)
        sort();
    else
        takeFromNames();
}

void FieldOrder::sort()
{
    static_assert(!vx::detail::HashOrder<>().isFull(FEW));
    std::size_t count = 0;
    for (; count < m_entry.m_count; ++count) {
        const Field& field = m_entry.at(count);
        std::size_t place = count;
        for (; place > 0 && m_few[place - 1]->bucket < field.bucket; --place)
            m_few[place] = m_few[place - 1];
        m_few[place] = &field;
    }
    m_fields = {m_few.data(), count};
}

void FieldOrder::takeFromNames()
{
    m_many.reserve(m_entry.m_count);
    const auto names = m_entry.getFieldNames();
    for (const Reference<String>& name : *names)
        m_many.push_back(m_entry.find(name->view()));
    m_fields = m_many;
}

template <class Builder>
void FieldOrder::print(const Field& field, Builder& text) const
{
    struct {
        void operator()(std::monostate) const
        {
            const Object* const value = field.object.load(std::memory_order_relaxed);
            if (value == nullptr)
                throwResult(RESULT_END_OF_FILE); // as `getField` does
            appendWhole(text, value->toString().view());
        }
        void operator()(std::int32_t number) const { text.appendNumber(number); }
        void operator()(std::uint32_t number) const { text.appendNumber(number); }
        void operator()(const STRUCT_VX_TIME& time) const { printTime(time, text); }
        void operator()(const ZonedTime& time) const { printTime(time, text); }
        void operator()(LogEntry::Piece piece) const { appendWhole(text, entry.textOf(piece)); }

        const LogEntry& entry;
        const Field& field;
        Builder& text;
    } printer {m_entry, field, text};
    std::visit(printer, field.plain);
}

template void FieldOrder::print(const Field&, vx::detail::TextBuilder&) const;
template void FieldOrder::print(const Field&, Utf8Builder&) const;

bool FieldOrder::isPlain(const LogEntry& entry) noexcept
{
    for (std::size_t place = 0; place < entry.m_count; ++place) {
        if (std::holds_alternative<std::monostate>(entry.at(place).plain))
            return false;
    }
    return true;
}

const std::int32_t* FieldOrder::plainLevelOf(const LogEntry& entry) noexcept
{
    for (std::size_t place = 0; place < entry.m_count; ++place) {
        const Field& field = entry.at(place);
        if (field.loggerField == LogEntry::LEVEL)
            return std::get_if<std::int32_t>(&field.plain);
    }
    return nullptr;
}

bool FieldOrder::isNumber(const Field& field) noexcept
{
    if (!std::holds_alternative<std::monostate>(field.plain))
        return std::holds_alternative<std::int32_t>(field.plain) || std::holds_alternative<std::uint32_t>(field.plain);
    return dynamic_cast<const Number*>(field.object.load(std::memory_order_relaxed)) != nullptr;
}

} // namespace vx::log::detail
