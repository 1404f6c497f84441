#include "vx/net/SocketPoller.h"

#include "tests/vx/Common.h"

#include <array>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>

namespace vx::net {
namespace {

/// Two connected sockets; the second one is the peer's.
class Pair {
public:
    Pair() { EXPECT_EQ(::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, m_ends), 0); }
    ~Pair()
    {
        ::close(m_ends[0]);
        closePeer();
    }
    Pair(const Pair&) = delete;
    Pair& operator=(const Pair&) = delete;
    unsigned int socket() const { return static_cast<unsigned int>(m_ends[0]); }
    void sendFromPeer() { EXPECT_EQ(::send(m_ends[1], "x", 1, 0), 1); }
    void closePeer()
    {
        if (m_ends[1] != -1)
            ::close(m_ends[1]);
        m_ends[1] = -1;
    }

private:
    int m_ends[2];
};

struct SocketPollerTest : testing::Test {
    /// The ready sockets as "id:ready", in the order of the ids.
    std::string ready(std::uint32_t milliseconds = 0)
    {
        std::array<SocketPoller::Event, 8> events;
        std::size_t count = 0;
        EXPECT_EQ(poller.wait(events, milliseconds, &count), VX_E_SOCKET_OK);
        std::vector<std::string> texts;
        for (std::size_t index = 0; index < count; ++index)
            texts.push_back(std::to_string(events[index].id) + ':' + std::to_string(events[index].ready) + ' ');
        std::sort(texts.begin(), texts.end());
        std::string text;
        for (const std::string& each : texts)
            text += each;
        return text;
    }

    ENUM_VX_E_SOCKET status = VX_E_SOCKET_EINVAL;
    SocketPoller poller {&status};
};

TEST_F(SocketPollerTest, TellsWhatIsReadyOfWhatIsWaitedFor)
{
    ASSERT_EQ(status, VX_E_SOCKET_OK);
    Pair one;
    Pair two;
    EXPECT_EQ(poller.add(one.socket(), SocketPoller::READ, 1), VX_E_SOCKET_OK);
    EXPECT_EQ(poller.add(two.socket(), SocketPoller::READ | SocketPoller::WRITE, 2), VX_E_SOCKET_OK);
    EXPECT_EQ(ready(), "2:2 ");
    one.sendFromPeer();
    EXPECT_EQ(ready(), "1:1 2:2 ");
    EXPECT_EQ(poller.change(two.socket(), 0, 3), VX_E_SOCKET_OK);
    EXPECT_EQ(ready(), "1:1 ");
    EXPECT_EQ(poller.remove(one.socket()), VX_E_SOCKET_OK);
    EXPECT_EQ(ready(1), "");
    two.closePeer();
    EXPECT_EQ(ready(), "3:8 ");
}

TEST_F(SocketPollerTest, RefusesWhatCannotBeWaitedFor)
{
    Pair pair;
    std::size_t count = 7;
    EXPECT_EQ(poller.add(0, SocketPoller::READ, 1), VX_E_SOCKET_ENOTSOCK);
    EXPECT_EQ(poller.add(pair.socket(), SocketPoller::FAILED, 1), VX_E_SOCKET_EINVAL);
    EXPECT_EQ(poller.add(pair.socket(), SocketPoller::READ, UINT64_MAX), VX_E_SOCKET_EINVAL);
    EXPECT_EQ(poller.change(pair.socket(), SocketPoller::READ, 1), VX_E_SOCKET_EINVAL);
    EXPECT_EQ(poller.remove(pair.socket()), VX_E_SOCKET_EINVAL);
    EXPECT_EQ(poller.add(pair.socket(), SocketPoller::READ, 1), VX_E_SOCKET_OK);
    EXPECT_EQ(poller.add(pair.socket(), SocketPoller::READ, 1), VX_E_SOCKET_EINVAL);
    EXPECT_EQ(poller.wait({}, 0, &count), VX_E_SOCKET_EINVAL);
    EXPECT_EQ(count, 0U);
    EXPECT_EQ(poller.add(static_cast<unsigned int>(-1), SocketPoller::READ, 1), VX_E_SOCKET_EBADF);
}

TEST_F(SocketPollerTest, TellsInTurnWhatDoesNotFit)
{
    std::array<Pair, 5> pairs;
    for (std::size_t index = 0; index < pairs.size(); ++index) {
        EXPECT_EQ(poller.add(pairs[index].socket(), SocketPoller::WRITE, index), VX_E_SOCKET_OK);
    }
    std::array<int, 5> told {};
    for (int round = 0; round < 5; ++round) {
        std::array<SocketPoller::Event, 2> events;
        std::size_t count = 0;
        EXPECT_EQ(poller.wait(events, 0, &count), VX_E_SOCKET_OK);
        ASSERT_EQ(count, 2U);
        for (const SocketPoller::Event& event : events)
            ++told[event.id];
    }
    EXPECT_EQ(told, (std::array<int, 5> {2, 2, 2, 2, 2}));
}

TEST_F(SocketPollerTest, IsWokenByAnotherThread)
{
    Pair pair;
    EXPECT_EQ(poller.add(pair.socket(), SocketPoller::READ, 1), VX_E_SOCKET_OK);
    std::thread other([&] { EXPECT_EQ(poller.wake(), VX_E_SOCKET_OK); });
    EXPECT_EQ(ready(0xFFFFFFFF), "");
    other.join();
    EXPECT_EQ(poller.wake(), VX_E_SOCKET_OK);
    EXPECT_EQ(poller.wake(), VX_E_SOCKET_OK);
    pair.sendFromPeer();
    EXPECT_EQ(ready(0xFFFFFFFF), "1:1 ");
    EXPECT_EQ(ready(), "1:1 "); // both wakes have been used up
}

} // namespace
} // namespace vx::net
