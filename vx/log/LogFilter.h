#pragma once

#include "vx/Object.h"
#include "vx/Reference.h"
#include "vx/String.h"
#include "vx/log/ILogProcessor.h"
#include "vx/sync/Mutex.h"

#include <atomic>
#include <cstdint>
#include <vector>

namespace vx::log {

/// Passes on only the entries that its settings select. The settings may be changed while other threads log: for each
/// entry, either the settings before a change or those after it are used.
///
/// The level of an entry without the field "level" is 0, and its name without the field "name" is empty.
class VX_API LogFilter : public Object, public ILogProcessor {
public:
    /// Passes every entry at first. Holds a reference to the target.
    static Reference<LogFilter> create(ILogProcessor* target);

    VX_OBJECT_UNKNOWN(Object)
    ~LogFilter() noexcept(false) override;

    /// Drops entries whose level is outside of this range, both ends included. Costs one atomic store.
    void setLevels(std::int32_t lowest, std::int32_t highest) noexcept;

    /// A range of levels for the loggers whose name matches a pattern: `*` matches any number of characters, `?` one.
    /// Names are case-sensitive.
    struct Rule {
        String pattern;
        std::int32_t lowest = INT32_MIN;
        std::int32_t highest = INT32_MAX;
    };
    /// For an entry within the range of `setLevels`, the first rule whose pattern matches decides. If none matches, the
    /// entry passes.
    void setRules(std::vector<Rule> rules);

    // ILogProcessor
    void process(const ILogEntry* entry) override;

private:
    class Rules;

    explicit LogFilter(ILogProcessor* target);
    bool lets(const ILogEntry& entry);

    const Reference<ILogProcessor> m_target;
    std::atomic<std::uint64_t> m_levels; ///< the lowest in the upper half, the highest in the lower one
    std::atomic<bool> m_hasRules {false};
    sync::Mutex m_lock;
    Reference<const Rules> m_rules VX_GUARDED_BY(m_lock); ///< replaced as a whole
};

} // namespace vx::log
