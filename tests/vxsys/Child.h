#pragma once

#include "tests/NotCopied.h"
#include <gtest/gtest.h>

#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <functional>
#include <string>
#include <sys/socket.h>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>

/// The letter of the system for the state of a process, or of a thread of this one: 'S' sleeps, 'Z' has ended; '\0' if
/// there is none.
inline char stateIn(const std::string& statusFile)
{
    std::ifstream file(statusFile);
    std::string text;
    std::getline(file, text, '\0'); // if the process ends meanwhile it reads nothing, and does not throw
    const std::size_t bracket = text.rfind(')');
    return bracket != text.npos ? text[bracket + 2] : '\0';
}

inline char stateOfProcess(pid_t process)
{
    return stateIn("/proc/" + std::to_string(process) + "/stat");
}

inline char stateOfThread(pid_t thread)
{
    return stateIn("/proc/self/task/" + std::to_string(thread) + "/stat");
}

/// Computes for some microseconds, so that what follows happens at any moment of another process. No test may depend on
/// how long it takes.
inline void spin(std::uint64_t microseconds)
{
    volatile std::uint64_t steps = 0;
    while (steps < microseconds * 300)
        steps = steps + 1;
}

/// A separate process that runs `work`, and is killed at the end of the block if it still runs. The two sides send each
/// other single characters; '\0' means that the other side has ended. If an expectation fails in the child, `wait`
/// returns 1.
class Child : NotCopied {
public:
    class Side {
    public:
        explicit Side(int channel)
            : m_channel(channel)
        {
        }
        void tell(char what) const { ::send(m_channel, &what, 1, MSG_NOSIGNAL); }
        char hear() const
        {
            char what = '\0';
            ssize_t got;
            do
                got = ::recv(m_channel, &what, 1, 0);
            while (got == -1 && errno == EINTR);
            return got == 1 ? what : '\0';
        }

    private:
        friend class Child;
        int m_channel;
    };

    explicit Child(const std::function<void(Side&)>& work)
    {
        std::fflush(nullptr); // otherwise the child would print pending output as well
        int ends[2];
        if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0 || (m_id = ::fork()) == -1)
            throw std::system_error(errno, std::generic_category());
        ::close(ends[m_id == 0 ? 0 : 1]);
        m_side = Side(ends[m_id == 0 ? 1 : 0]);
        if (m_id == 0) {
            try {
                work(m_side);
            } catch (...) { // must not continue with the next tests
                ADD_FAILURE() << "the child threw";
            }
            ::_exit(testing::Test::HasFailure() ? 1 : 0);
        }
    }
    ~Child()
    {
        kill();
        wait();
        ::close(m_side.m_channel);
    }

    void tell(char what) const { m_side.tell(what); }
    char hear() const { return m_side.hear(); }

    /// Until `wait`, a killed process remains as a zombie.
    void kill(int signal = SIGKILL) const
    {
        if (m_id > 0)
            ::kill(m_id, signal);
    }
    /// Its exit code, or the negative number of the signal that ended it.
    int wait()
    {
        int status = m_status;
        if (m_id > 0) {
            while (::waitpid(m_id, &status, 0) == -1 && errno == EINTR) { }
            m_id = -1;
        }
        m_status = status;
        return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
    }
    /// Whether it has ended. If so, it has also been waited for.
    bool hasEnded()
    {
        if (m_id > 0 && ::waitpid(m_id, &m_status, WNOHANG) == m_id)
            m_id = -1;
        return m_id <= 0;
    }

private:
    pid_t m_id = -1;
    int m_status = 0;
    Side m_side {-1};
};

/// A child that has done `work` and then waits until it is killed.
class HoldingChild : public Child {
public:
    explicit HoldingChild(const std::function<void()>& work)
        : Child([&](Side& side) {
            work();
            side.tell('h');
            side.hear();
        })
    {
        EXPECT_EQ(hear(), 'h');
    }
};
