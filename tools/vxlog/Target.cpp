#include "Target.h"

#include "Texts.h"
#include "common/Failure.h"

#include <exception>
#include <utility>

namespace vxlog {

using namespace vx;

Target::Target(Reference<log::ILogProcessor> writer)
    : m_writer(std::move(writer))
{
}

void Target::process(const log::ILogEntry* entry)
{
    const std::lock_guard lock(m_lock);
    if (!m_hasFailed)
        guard([&] {
            m_writer->process(entry);
            ++m_written;
        });
}

void Target::close()
{
    const std::lock_guard lock(m_lock);
    guard([&] { m_writer.detach()->Release(); }); // the destructor of Reference would swallow the failure
}

void Target::check(const vxtools::Text& log) const
{
    const std::lock_guard lock(m_lock);
    if (m_hasFailed)
        throw vxtools::Failure(log, AFTER_ENTRIES(m_failure, m_written));
}

template <class Work>
void Target::guard(Work work)
{
    std::string failure;
    try {
        work();
        return;
    } catch (const Exception& thrown) {
        failure = vxtools::textOf(thrown);
    } catch (const std::exception& thrown) {
        failure = thrown.what();
    }
    if (!m_hasFailed)
        m_failure = failure;
    m_hasFailed = true;
}

} // namespace vxlog
