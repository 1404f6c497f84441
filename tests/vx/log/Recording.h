#pragma once

#include "tests/vx/Common.h"
#include "vx/Object.h"
#include "vx/log/ILogEntry.h"
#include "vx/log/ILogProcessor.h"
#include "vx/sync/Mutex.h"
#include "vx/sync/ScopedLock.h"

namespace vx::log {

/// The text of a field, as UTF-8.
inline std::string fieldOf(const ILogEntry& entry, const char16_t* name)
{
    return entry.getField(name)->toString().toUtf8();
}

/// Stores what it gets. With a limit, it throws at the entry after that.
class RecordingProcessor : public Object, public ILogProcessor {
public:
    explicit RecordingProcessor(std::size_t limit = SIZE_MAX)
        : m_limit(limit)
    {
    }

    VX_OBJECT_UNKNOWN(Object)

    void process(const ILogEntry* entry) override
    {
        const sync::ScopedLock lock(m_lock);
        if (m_entries.size() >= m_limit)
            throw RangeErrorException(u"no more");
        m_entries.emplace_back(entry);
    }

    /// The texts of all entries in their order, "; " between them.
    std::string texts()
    {
        const sync::ScopedLock lock(m_lock);
        std::string all;
        for (const auto& entry : m_entries)
            all += (all.empty() ? "" : "; ") + fieldOf(*entry, u"text");
        return all;
    }
    const std::vector<Reference<const ILogEntry>>& entries() const { return m_entries; }

private:
    const std::size_t m_limit;
    sync::Mutex m_lock;
    std::vector<Reference<const ILogEntry>> m_entries;
};

} // namespace vx::log
