#include "vxreg/Trial.h"

#include "common/Failure.h"
#include "common/Output.h"
#include "vxreg/Texts.h"

#include <vx/Describe.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <iostream>
#include <optional>
#include <poll.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace vxreg {

namespace {

using namespace vxtools;

constexpr char PROBLEM = 'P';
constexpr char STAGE = 'S';
constexpr char END = 'E';
constexpr int SECONDS = 60; // of silence
constexpr int SECONDS_AT_END = 5; // for a child that can tell nothing more

/// The next bytes from the child. Empty if there are no more, no value if it is silent for too long.
std::optional<std::string> receive(int source)
{
    using Clock = std::chrono::steady_clock;
    const auto end = Clock::now() + std::chrono::seconds(SECONDS);
    for (;;) {
        const auto rest = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now());
        pollfd entry {source, POLLIN, 0};
        const int ready = rest.count() > 0 ? ::poll(&entry, 1, static_cast<int>(rest.count())) : 0;
        if (ready == 0)
            return std::nullopt;
        std::array<char, 4096> bytes {};
        const ssize_t count = ready > 0 ? ::read(source, bytes.data(), bytes.size()) : -1;
        if (count >= 0)
            return std::string(bytes.data(), static_cast<std::size_t>(count));
        if (errno != EINTR)
            return std::string();
    }
}

/// Waits for the end of the child, which has told all or has closed its end of the pipe. False if it had to be killed.
bool awaitEnd(pid_t child, int& status)
{
    using Clock = std::chrono::steady_clock;
    const auto end = Clock::now() + std::chrono::seconds(SECONDS_AT_END);
    pid_t ended = 0;
    while ((ended = ::waitpid(child, &status, WNOHANG)) == 0 && Clock::now() < end)
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    if (ended != 0)
        return true;
    ::kill(child, SIGKILL);
    while (::waitpid(child, &status, 0) < 0 && errno == EINTR) { }
    return false;
}

} // namespace

Trial::Trial(int target, Messages& messages)
    : m_target(target)
    , m_messages(messages)
{
}

void Trial::tell(const Text& problem)
{
    send(PROBLEM, m_messages.say(problem));
}

void Trial::enter(const Text& stage)
{
    send(STAGE, m_messages.say(stage));
}

/// A line begins with its kind and ends with a zero byte.
void Trial::send(char kind, const std::string& text) const
{
    const std::string line = kind + text.substr(0, text.find('\0')) + '\0';
    if (!writeAll(m_target, line))
        ::_exit(1);
}

std::vector<std::string> Trial::run(Messages& messages, const std::function<void(Trial&)>& work)
{
    std::array<int, 2> pipe {};
    if (::pipe2(pipe.data(), O_CLOEXEC) != 0)
        throw Failure("pipe", textOfError(errno));
    std::cout.flush();
    const pid_t child = ::fork();
    if (child == 0) {
        ::close(pipe[0]);
        ::dup2(STDERR_FILENO, STDOUT_FILENO); // what a library prints is not part of the report
        std::signal(SIGPIPE, SIG_DFL);
        Trial trial(pipe[1], messages);
        try {
            work(trial);
        } catch (const vx::Exception& failure) {
            trial.tell(vx::explain(failure).toUtf8());
        } catch (const std::exception& failure) {
            trial.tell(failure.what());
        }
        trial.send(END, "");
        ::_exit(0);
    }
    const int error = errno;
    ::close(pipe[1]);
    if (child < 0) {
        ::close(pipe[0]);
        throw Failure("fork", textOfError(error));
    }

    std::vector<std::string> problems;
    std::string stage, received;
    bool hasEnded = false, isSilent = false;
    while (!hasEnded) {
        const std::optional<std::string> bytes = receive(pipe[0]);
        isSilent = !bytes;
        if (isSilent || bytes->empty())
            break;
        received += *bytes;
        for (std::size_t end; (end = received.find('\0')) != received.npos; received.erase(0, end + 1)) {
            const std::string text = received.substr(1, end - 1);
            if (received[0] == PROBLEM)
                problems.push_back(text);
            else if (received[0] == STAGE)
                stage = text;
            else
                hasEnded = true;
        }
    }
    ::close(pipe[0]);
    if (isSilent)
        ::kill(child, SIGKILL);
    int status = 0;
    const bool stays = !awaitEnd(child, status) && !isSilent;
    if (isSilent || stays)
        problems.push_back(messages.say(STUCK(stage, stays ? SECONDS_AT_END : SECONDS)));
    else if (WIFSIGNALED(status))
        problems.push_back(messages.say(CRASHED(stage, WTERMSIG(status), ::strsignal(WTERMSIG(status)))));
    else if (!hasEnded || WEXITSTATUS(status) != 0)
        problems.push_back(messages.say(ENDED(stage, WEXITSTATUS(status))));
    return problems;
}

} // namespace vxreg
