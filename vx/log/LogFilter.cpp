#include "vx/log/LogFilter.h"

#include "vx/Exception.h"
#include "vx/Result.h"
#include "vx/detail/Hidden.h"
#include "vx/log/detail/EntryFields.h"
#include "vx/sync/ScopedLock.h"

#include <string_view>
#include <utility>

namespace vx::log {

namespace {

/// Goes back at most once for each unit of the text: only the last star can have taken too few.
bool fits(std::u16string_view text, std::u16string_view pattern) noexcept
{
    std::size_t at = 0, inPattern = 0;
    std::size_t afterStar = std::u16string_view::npos, startOfStar = 0;
    while (at < text.size()) {
        if (inPattern < pattern.size() && pattern[inPattern] == u'*') {
            afterStar = ++inPattern;
            startOfStar = at;
        } else if (inPattern < pattern.size() && (pattern[inPattern] == u'?' || pattern[inPattern] == text[at])) {
            ++inPattern;
            ++at;
        } else if (afterStar != std::u16string_view::npos) {
            inPattern = afterStar;
            at = ++startOfStar;
        } else {
            return false;
        }
    }
    return pattern.find_first_not_of(u'*', inPattern) == std::u16string_view::npos;
}

constexpr std::uint64_t pack(std::int32_t lowest, std::int32_t highest) noexcept
{
    return std::uint64_t {static_cast<std::uint32_t>(lowest)} << 32 | static_cast<std::uint32_t>(highest);
}

} // namespace

class VX_HIDDEN LogFilter::Rules : public Object {
public:
    explicit Rules(std::vector<Rule> rules)
        : m_rules(std::move(rules))
    {
    }

    bool let(const ILogEntry& entry, std::int32_t level) const
    {
        const String name = detail::nameOf(entry);
        for (const Rule& rule : m_rules) {
            if (fits(name.view(), rule.pattern.view()))
                return level >= rule.lowest && level <= rule.highest;
        }
        return true;
    }

private:
    const std::vector<Rule> m_rules;
};

LogFilter::LogFilter(ILogProcessor* target)
    : m_target(target)
    , m_levels(pack(INT32_MIN, INT32_MAX))
{
    if (target == nullptr)
        throwResult(RESULT_INVALID_ARGUMENT);
}

LogFilter::~LogFilter() noexcept(false) = default;

Reference<LogFilter> LogFilter::create(ILogProcessor* target)
{
    return new LogFilter(target);
}

void LogFilter::setLevels(std::int32_t lowest, std::int32_t highest) noexcept
{
    m_levels.store(pack(lowest, highest), std::memory_order_relaxed);
}

void LogFilter::setRules(std::vector<Rule> rules)
{
    const bool hasRules = !rules.empty();
    Reference<const Rules> made(new Rules(std::move(rules)));
    const sync::ScopedLock lock(m_lock);
    std::swap(m_rules, made);
    m_hasRules = hasRules;
}

bool LogFilter::lets(const ILogEntry& entry)
{
    const std::uint64_t levels = m_levels.load(std::memory_order_relaxed);
    const std::int32_t level = detail::levelOf(entry);
    if (level < static_cast<std::int32_t>(levels >> 32) || level > static_cast<std::int32_t>(levels))
        return false;
    if (!m_hasRules)
        return true;
    Reference<const Rules> rules;
    {
        const sync::ScopedLock lock(m_lock);
        rules = m_rules;
    }
    return rules->let(entry, level);
}

void LogFilter::process(const ILogEntry* entry)
{
    if (entry == nullptr)
        throwResult(RESULT_INVALID_ARGUMENT);
    if (lets(*entry))
        m_target->process(entry);
}

} // namespace vx::log
