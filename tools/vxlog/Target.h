#pragma once

#include "common/Messages.h"

#include <vx/Object.h>
#include <vx/Reference.h>
#include <vx/log/ILogProcessor.h>

#include <atomic>
#include <cstdint>
#include <mutex>
#include <string>

namespace vxlog {

/// Stands between the chain and the writer of the log. It stores the first failure, which would end a worker unnoticed,
/// and drops all later entries. It releases the writer on request, even if others still hold the chain.
class Target : public vx::Object, public vx::log::ILogProcessor {
public:
    explicit Target(vx::Reference<vx::log::ILogProcessor> writer);

    VX_OBJECT_UNKNOWN(Object)

    // ILogProcessor
    void process(const vx::log::ILogEntry* entry) override;

    /// Releases the writer, which then ends its log.
    void close();
    bool hasFailed() const noexcept { return m_hasFailed; }
    /// Throws Failure for `log` if there was a failure.
    void check(const vxtools::Text& log) const;

private:
    template <class Work>
    void guard(Work work);

    mutable std::mutex m_lock;
    vx::Reference<vx::log::ILogProcessor> m_writer;
    std::int64_t m_written = 0;
    std::string m_failure;
    std::atomic<bool> m_hasFailed {false};
};

} // namespace vxlog
