#include "Progress.h"

#include <algorithm>
#include <cstdio>
#include <unistd.h>

namespace vxtools {

namespace {

constexpr std::int64_t MIB = 1024 * 1024;
constexpr std::int64_t SMALL = 16 * MIB;
constexpr std::chrono::milliseconds PERIOD {100};

} // namespace

Progress::Progress(std::int64_t size)
    : m_size(size)
    , m_isWanted(size > SMALL && ::isatty(STDERR_FILENO) == 1)
    , m_next(Clock::now())
{
}

Progress::~Progress()
{
    if (m_isShown)
        std::fputs("\r\033[K", stderr);
}

void Progress::update(std::int64_t done)
{
    if (!m_isWanted)
        return;
    const Clock::time_point now = Clock::now();
    if (now < m_next)
        return;
    m_next = now + PERIOD;
    m_isShown = true;
    done = std::min(done, m_size); // the file may grow meanwhile
    std::fprintf(stderr, "\r%3d %% of %lld MiB",
        static_cast<int>(static_cast<double>(done) * 100 / static_cast<double>(m_size)),
        static_cast<long long>(m_size / MIB));
}

} // namespace vxtools
