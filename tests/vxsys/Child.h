#pragma once

#include <gtest/gtest.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <functional>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>

/// A process of its own that runs `work` and is killed at the end of the block at the latest. The two sides tell each other
/// single characters; a side that has gone tells '\0'. Failed expectations in the child make `wait` give 1.
class Child {
public:
    /// One end of the talk.
    class Side {
    public:
        void tell(char what) const { EXPECT_EQ(::write(m_out, &what, 1), 1); }
        char hear() const
        {
            char what = '\0';
            ssize_t got;
            do
                got = ::read(m_in, &what, 1);
            while (got == -1 && errno == EINTR);
            return got == 1 ? what : '\0';
        }

    private:
        friend class Child;
        int m_in = -1;
        int m_out = -1;
    };

    explicit Child(const std::function<void(Side&)>& work)
    {
        int toParent[2];
        int toChild[2];
        if (::pipe2(toParent, O_CLOEXEC) != 0 || ::pipe2(toChild, O_CLOEXEC) != 0 || (m_id = ::fork()) == -1)
            throw std::system_error(errno, std::generic_category());
        Side side;
        side.m_in = m_id == 0 ? toChild[0] : toParent[0];
        side.m_out = m_id == 0 ? toParent[1] : toChild[1];
        ::close(m_id == 0 ? toParent[0] : toChild[0]);
        ::close(m_id == 0 ? toChild[1] : toParent[1]);
        if (m_id == 0) {
            std::signal(SIGPIPE, SIG_IGN);
            work(side);
            ::_exit(testing::Test::HasFailure() ? 1 : 0);
        }
        m_side = side;
    }
    ~Child()
    {
        kill();
        wait();
        ::close(m_side.m_in);
        ::close(m_side.m_out);
    }
    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;

    void tell(char what) const { m_side.tell(what); }
    char hear() const { return m_side.hear(); }

    /// Until it is waited for, a killed process stays as a zombie.
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
    /// Whether it has ended. It is waited for then.
    bool hasEnded()
    {
        if (m_id > 0 && ::waitpid(m_id, &m_status, WNOHANG) == m_id)
            m_id = -1;
        return m_id <= 0;
    }

private:
    pid_t m_id = -1;
    int m_status = 0;
    Side m_side;
};
