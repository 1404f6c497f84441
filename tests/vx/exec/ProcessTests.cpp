#include "vx/exec/Process.h"

#include "tests/AllocationProbe.h"
#include "tests/Outcome.h"
#include "tests/Threads.h"
#include "tests/Told.h"
#include "tests/vxsys/Child.h"
#include "tests/vxsys/Scratch.h"
#include "vx/Exceptions.h"
#include "vx/String.h"
#include "vx/net/TcpSocket.h"
#include "vxsys/Process.h"
#include "vxsys/Result.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fcntl.h>
#include <set>
#include <span>
#include <sys/socket.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <utility>
#include <vector>

namespace vx::exec {
namespace {

std::string readAll(io::InputStream& stream)
{
    std::string all;
    signed char piece[4096];
    for (std::int32_t got; (got = stream.read(piece, sizeof piece)) > 0;)
        all.append(reinterpret_cast<const char*>(piece), static_cast<std::size_t>(got));
    return all;
}

std::string readLine(io::InputStream& stream)
{
    std::string line;
    for (signed char byte; stream.read(&byte, 1) == 1 && byte != '\n';)
        line += static_cast<char>(byte);
    return line;
}

void writeAll(Process& process, const std::string& text)
{
    process.getOutputStream()->write(text.data(), static_cast<std::int32_t>(text.size()));
    process.closeInput();
}

/// A shell that runs `script`, which must not contain a double quote.
Reference<Process> shell(const std::string& script)
{
    return new Process(u"/bin/sh", String(("-c \"" + script + "\"").c_str()).getData());
}

TEST(Process, StartsWhatItIsTold)
{
    const Scratch scratch;
    const std::u16string folder = scratch.full();
    const char16_t* const two[] = {u"A=1", u"B=gr\u00FCn =", nullptr};
    ScopedVariable inherited("VX_PROCESS_TEST", "from the parent");
    struct {
        const char16_t *program, *commandLine, *directory;
        const char16_t* const* environment;
        unsigned int flags;
        std::string told; // its output, errors and exit code
    } cases[] = {
        {u"/bin/sh", u"-c \"echo out; echo err >&2; exit 3\"", nullptr, nullptr, 0, "out\n err\n 3"},
        {u"C:\\usr\\bin\\printf", u"  [%s] a \"b  c\"\t\"\" d\"e f\"g ", nullptr, nullptr, 0, "[a][b  c][][de fg]  0"},
        {u"printf", u"%s found", nullptr, nullptr, 1, "found  0"},
        {u"/bin/pwd", nullptr, folder.c_str(), nullptr, 0, scratch.getPath().string() + "\n  0"},
        {u"/usr/bin/env", nullptr, nullptr, two, 0, "A=1\nB=gr\xC3\xBCn =\n  0"},
        {u"/bin/sh", u"-c \"echo $VX_PROCESS_TEST\"", nullptr, nullptr, 0, "from the parent\n  0"},
        {u"/bin/sh", u"-c \"kill -9 $$\"", nullptr, nullptr, 0, "  137"},
    };
    for (const auto& row : cases) {
        Reference<Process> process(
            new Process(row.program, row.commandLine, row.directory, row.environment, row.flags));
        EXPECT_EQ((Told {readAll(*process->getInputStream()), readAll(*process->getErrorStream()), process->join()}),
            row.told);
    }
}

TEST(Process, TellsWhatCannotBeStarted)
{
    const auto error = [](const char16_t* program, const char16_t* directory, unsigned int flags) {
        return VXResultToNative(resultOf([&] { Process(program, nullptr, directory, nullptr, flags); }));
    };
    EXPECT_EQ((Told {error(u"/etc/passwd", nullptr, 0), error(u"/bin/sh", u"/no/such/folder", 0),
                  error(u"/bin/sh", nullptr, 2)}),
        (Told {EACCES, ENOENT, EINVAL}));
}

TEST(Process, IsJoinedOnce)
{
    const Reference<Process> process = shell("read line; exit 5");
    EXPECT_THROW(process->getExitCode(), IllegalStateException);
    EXPECT_FALSE(process->tryJoin());
    process->getOutputStream()->close(); // leaves the pipe open
    EXPECT_FALSE(process->tryJoin());
    process->closeInput();
    while (!process->tryJoin())
        std::this_thread::yield();
    EXPECT_EQ(process->getExitCode(), 5);
    EXPECT_THROW(process->join(), IllegalStateException);
}

TEST(Process, IsAwaitedForATimeAndEndedBySignals)
{
    const Reference<Process> process = shell("trap 'echo asked' TERM; echo $$; while :; do read line || :; done");
    const Reference<io::InputStream> output = process->getInputStream();
    EXPECT_EQ(readLine(*output), std::to_string(process->getProcessID())) << "the trap is set";
    EXPECT_TRUE(process->terminate());
    EXPECT_FALSE(process->joinFor(0));
    EXPECT_FALSE(process->joinFor(1)) << "it only says that it was asked";
    EXPECT_EQ(readLine(*output), "asked");
    EXPECT_EQ(resultOf([&] { process->sendSignal(0); }), VXResultFromNative(EINVAL));
    EXPECT_TRUE(process->kill());
    EXPECT_TRUE(process->joinFor(VX_WAIT_FOREVER));
    EXPECT_EQ(process->getExitCode(), 128 + SIGKILL);
    EXPECT_FALSE(process->kill());
    EXPECT_TRUE(process->joinFor(0)) << "seen before";

    const Reference<Process> ended = shell("exit 5");
    siginfo_t seen {};
    EXPECT_EQ(::waitid(P_PID, ended->getProcessID(), &seen, WEXITED | WNOWAIT), 0);
    EXPECT_FALSE(ended->terminate()) << "it is not joined yet";
    EXPECT_TRUE(ended->joinFor(0));
    EXPECT_EQ(ended->getExitCode(), 5);

    // Without process descriptors a handle has the number of a process. One that is no child gets no signal.
    for (const auto number : {0U, static_cast<std::uint32_t>(::getpid())})
        EXPECT_NE(VXProcessSendSignal(0x80000000U | number, SIGCONT), 0) << number;
}

TEST(Process, CarriesMoreThanAPipeHoldsInBothDirections)
{
    const std::string text(3'000'000, 'x');
    const Reference<Process> process = shell("tee /dev/fd/2");
    const Reference<io::InputStream> output = process->getInputStream(), errors = process->getErrorStream();
    std::thread writer([&] { writeAll(*process, text); });
    std::thread reader([&] { EXPECT_TRUE(readAll(*errors) == text); });
    EXPECT_TRUE(readAll(*output) == text);
    writer.join();
    reader.join();
    EXPECT_EQ(process->join(), 0);
}

TEST(Process, GivesTheChildThreeStreamsAndNothingElse)
{
    const auto before = openDescriptors();
    EXPECT_LT(resultOf([] { Process(u"/no/such/program"); }), 0);
    const int inheritable = ::open("/dev/null", O_RDONLY);
    sigset_t blocked, mask;
    sigemptyset(&blocked);
    sigaddset(&blocked, SIGTERM);
    ::pthread_sigmask(SIG_BLOCK, &blocked, &mask);
    const auto disposition = std::signal(SIGUSR1, SIG_IGN);
    EXPECT_EQ(shell("kill -TERM $$; exit 7")->join(), 128 + SIGTERM) << "blocked";
    EXPECT_EQ(shell("kill -USR1 $$; exit 7")->join(), 128 + SIGUSR1) << "ignored";
    const Reference<Process> list = shell("ls /proc/$$/fd; :");
    EXPECT_EQ(readAll(*list->getInputStream()), "0\n1\n2\n");
    EXPECT_EQ(list->join(), 0);
    std::signal(SIGUSR1, disposition);
    ::pthread_sigmask(SIG_SETMASK, &mask, nullptr);
    ::close(inheritable);
    EXPECT_EQ(openDescriptors(), before + 3) << "the list's pipes";
}

/// If a child of one thread inherited the pipe of another thread's child, that one would never see its end.
TEST(Process, StartsFromSeveralThreadsAtOnce)
{
    inThreads(4, [](int) {
        for (int count = 0; count < 10; ++count) {
            Process process(u"/bin/cat");
            writeAll(process, "through");
            EXPECT_EQ((Told {readAll(*process.getInputStream()), process.join()}), "through 0");
        }
    });
}

TEST(Process, LeavesNoZombieWhenNobodyJoins)
{
    Reference<Process> running = shell("echo $$; read line"), ended = shell("echo $$");
    const Reference<io::OutputStream> keptOpen = running->getOutputStream();
    char digits[16] = "";
    running->getInputStream()->read(digits, sizeof digits);
    const pid_t runningId = std::stoi(digits), endedId = std::stoi(readAll(*ended->getInputStream()));
    running = nullptr;
    ended = nullptr;
    EXPECT_NE(stateOfProcess(runningId), '\0') << "it still runs";
    keptOpen->write("\n", 1);
    while (stateOfProcess(runningId) != '\0' || stateOfProcess(endedId) != '\0')
        std::this_thread::yield();
}

TEST(Process, SeesTheEndOfAChildThatTheSystemOrTheProgramCollected)
{
    Reference<Process> collected = shell("exit 5");
    readAll(*collected->getInputStream());
    EXPECT_GT(::waitpid(-1, nullptr, 0), 0);
    EXPECT_TRUE(collected->tryJoin());
    EXPECT_EQ(collected->getExitCode(), -1) << "unknown";

    const auto disposition = std::signal(SIGCHLD, SIG_IGN);
    const Reference<Process> ignored = shell("read line; exit 5");
    EXPECT_FALSE(ignored->tryJoin());
    ignored->closeInput();
    while (!ignored->tryJoin())
        std::this_thread::yield();
    EXPECT_EQ(ignored->getExitCode(), -1);
    EXPECT_EQ(shell("exit 5")->join(), -1);
    shell("exit 5"); // not waited for
    std::signal(SIGCHLD, disposition);
}

/// More than fits in a pipe, on both outputs, after the end of its input. It is written by the child itself or by a
/// grandchild.
TEST(Process, LetsAChildWriteThatIsLeftAlone)
{
    const Scratch scratch;
    for (const bool isJoined : {false, true}) {
        const std::filesystem::path file = scratch / (isJoined ? "joined" : "detached");
        Reference<Process> process
            = shell("exec 3<&0; (cat <&3; head -c 200000 /dev/zero && head -c 200000 /dev/zero >&2 && echo x >"
                + file.string() + (isJoined ? ") &" : ")"));
        if (isJoined) {
            EXPECT_EQ(process->join(), 0);
        }
        process = nullptr;
        while (contentOf(file) != "x\n")
            std::this_thread::yield();
    }
}

TEST(Process, LetsAProgramEndThatHasClosedDescriptorsOfTheLibrary)
{
    const Scratch scratch;
    const std::filesystem::path file = scratch / "file";
    Child child([&](Child::Side&) {
        ::alarm(10);
        shell("exec sleep 1"); // left alone
        ::close_range(3, ~0U, 0);
        for (int i = 0; i < 20; ++i) // get the numbers of the closed descriptors
            EXPECT_NE(::open(file.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600), -1);
        std::exit(testing::Test::HasFailure() ? 1 : 0);
    });
    EXPECT_EQ(child.wait(), 0);
    EXPECT_EQ(contentOf(file), "");
}

/// The output of the heir: the descriptors that are open there.
std::string listOfHeir(const char16_t* commandLine, std::span<const std::uint32_t> inherited)
{
    Process heir(String(HEIR_FILE).getData(), commandLine, nullptr, nullptr, 0, inherited);
    const std::string list = readAll(*heir.getInputStream());
    EXPECT_EQ(heir.join(), 0);
    return list;
}

TEST(Process, HandsOnDescriptorsThatTheCallerNames)
{
    struct Owned final : net::TcpSocket {
        explicit Owned(int descriptor)
            : TcpSocket(static_cast<unsigned int>(descriptor))
        {
        }
    };
    int ends[2];
    ASSERT_EQ(::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends), 0);
    Owned ours(ends[0]), theirs(ends[1]);
    const String id = theirs.getInheritanceId();
    const std::uint32_t named = Process::getInheritedDescriptor(id);
    EXPECT_EQ(listOfHeir(id.getData(), {&named, 1}), "0 1 2 " + std::to_string(ends[1]) + '\n');
    char text[10] = "";
    EXPECT_EQ((Told {ours.getInputStream()->read(text, 9), text}), "9 inherited");

    std::set<std::uint32_t> many {named};
    for (const int least : {3, 200, 202, 300})
        many.insert(static_cast<std::uint32_t>(::fcntl(ends[1], F_DUPFD, least)));
    std::string listed = "0 1 2";
    for (const std::uint32_t descriptor : many)
        listed += ' ' + std::to_string(descriptor);
    std::vector<std::uint32_t> inherited(many.rbegin(), many.rend());
    inherited.push_back(named);
    EXPECT_EQ(listOfHeir(nullptr, inherited), listed + '\n') << "in any order, and one of them twice";
    many.erase(named);
    for (const std::uint32_t descriptor : many)
        ::close(static_cast<int>(descriptor));
    const std::pair<std::uint32_t, int> wrong[] = {{2, EINVAL}, {0xFFFFFFFF, EBADF}, {*many.rbegin(), EBADF}};
    for (const auto& row : wrong)
        EXPECT_EQ(resultOf([&] { listOfHeir(nullptr, {&row.first, 1}); }), VXResultFromNative(row.second)) << row.first;
    for (const char16_t* other : {u"", u"socket=", u"412", u"x=-1", u"x=1x", u"x=2147483648"})
        EXPECT_EQ(resultOf([&] { Process::getInheritedDescriptor(other); }), VXResultFromNative(EINVAL))
            << String(other);
}

TEST(Process, KeepsNoDescriptorWhenMemoryFails)
{
    Child child([](Child::Side&) { // nothing was collected before
        const auto letGo = [] { Process(u"/bin/cat"); };
        const auto before = openDescriptors() + 2; // the collector has two descriptors
        const auto awaitCollection = [&](int = 0) {
            while (openDescriptors() != before)
                std::this_thread::yield();
        };
        letGo();
        awaitCollection();
        EXPECT_GT(failEachAllocation(letGo, awaitCollection), 2);
        awaitCollection();
        if (!testing::Test::HasFailure()) // `exit` would not join a thread that is joined when the library is unloaded
            ::execl("/bin/true", "true", nullptr);
    });
    EXPECT_EQ(child.wait(), 0);
}

TEST(Process, StartsWithoutStandardStreamsOfItsOwn)
{
    Child child([](Child::Side&) {
        ::close(0);
        ::close(1);
        const Reference<Process> process = shell("cat");
        writeAll(*process, "text");
        // Without `join` a thread would wait for the process, and the _exit of this child would not join that thread.
        EXPECT_EQ((Told {readAll(*process->getInputStream()), process->join()}), "text 0");
    });
    EXPECT_EQ(child.wait(), 0);
}

} // namespace
} // namespace vx::exec
