#include "Output.h"

#include "Spawn.h"
#include "common/Failure.h"
#include "common/Input.h"
#include "common/Messages.h"

#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace vxview {

using namespace vxtools;

Output::Output(bool hasPager)
    : m_file(STDOUT_FILENO)
{
    if (hasPager && ::isatty(STDOUT_FILENO) == 1)
        startPager();
}

Output::~Output()
{
    if (m_pager <= 0)
        return;
    ::close(m_file);
    while (waitpid(m_pager, nullptr, 0) < 0 && errno == EINTR)
        ;
}

/// Without a pager, the output goes to the terminal at once.
void Output::startPager()
{
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0)
        return;
    const char* const chosen = std::getenv("PAGER");
    // Leaves out what fits on one screen (F), shows colours (R), and keeps the screen (X).
    std::string command = chosen != nullptr && *chosen != '\0' ? chosen : "less -FRX";
    std::string shell = "sh", option = "-c";
    char* const arguments[] = {shell.data(), option.data(), command.data(), nullptr};
    const bool hasStarted = spawn(m_pager, arguments, ends[0], -1) == 0;
    ::close(ends[0]);
    if (hasStarted) {
        m_file = ends[1];
    } else {
        m_pager = -1;
        ::close(ends[1]);
    }
}

void Output::flush()
{
    std::string_view rest = m_buffer;
    while (!rest.empty()) {
        const ssize_t count = ::write(m_file, rest.data(), rest.size());
        if (count >= 0)
            rest.remove_prefix(static_cast<std::size_t>(count));
        else if (errno == EPIPE)
            throw OutputClosed();
        else if (const int error = errno; error != EINTR) {
            requireStream(1);
            throw Failure(STANDARD_OUTPUT(), textOfError(error));
        }
    }
    m_buffer.clear();
}

} // namespace vxview
