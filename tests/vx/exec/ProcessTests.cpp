#include "vx/exec/Process.h"

#include "tests/vxsys/Child.h"
#include "tests/vxsys/Scratch.h"
#include "vx/Exceptions.h"
#include "vx/Result.h"
#include "vx/String.h"
#include "vxsys/Result.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <thread>
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

void writeAll(Process& process, const std::string& text)
{
    process.getOutputStream()->write(
        reinterpret_cast<const signed char*>(text.data()), static_cast<std::int32_t>(text.size()));
    process.closeInput();
}

/// A shell that runs `script`, which holds no double quote.
Reference<Process> shell(const std::string& script)
{
    return new Process(u"/bin/sh", String(("-c \"" + script + "\"").c_str()).getData());
}

std::int32_t resultOf(const std::function<void()>& work)
{
    try {
        work();
    } catch (const ResultException& failure) {
        return failure.getResult();
    }
    return 0;
}

std::string messageOf(const std::function<void()>& work)
{
    try {
        work();
    } catch (const IllegalStateException& failure) {
        return failure.getDescription().toUtf8();
    }
    return {};
}

TEST(Process, StartsWhatItIsTold)
{
    const Scratch scratch;
    const std::u16string folder = scratch.full();
    const char16_t* const none[] = {nullptr};
    const char16_t* const two[] = {u"A=1", u"B=gr\u00FCn =", nullptr};
    ScopedVariable inherited("VX_PROCESS_TEST", "from the parent");
    struct {
        const char16_t* program;
        const char16_t* commandLine;
        const char16_t* directory;
        const char16_t* const* environment;
        unsigned int flags;
        std::string output;
        std::string error;
        int code;
    } cases[] = {
        {u"/bin/sh", u"-c \"echo out; echo err >&2; exit 3\"", nullptr, nullptr, 0, "out\n", "err\n", 3},
        {u"C:\\usr\\bin\\printf", u"  [%s] a \"b  c\"\t\"\" d\"e f\"g ", nullptr, nullptr, 0, "[a][b  c][][de fg]", "",
            0},
        {u"printf", u"%s found", nullptr, nullptr, 1, "found", "", 0},
        {u"/bin/pwd", nullptr, folder.c_str(), nullptr, 0, scratch.getPath().string() + "\n", "", 0},
        {u"/usr/bin/env", nullptr, nullptr, two, 0, "A=1\nB=gr\xC3\xBCn =\n", "", 0},
        {u"/usr/bin/env", nullptr, nullptr, none, 0, "", "", 0},
        {u"/bin/sh", u"-c \"echo $VX_PROCESS_TEST\"", nullptr, nullptr, 0, "from the parent\n", "", 0},
        {u"/bin/sh", u"-c \"kill -9 $$\"", nullptr, nullptr, 0, "", "", 128 + SIGKILL},
    };
    for (const auto& row : cases) {
        Reference<Process> process(
            new Process(row.program, row.commandLine, row.directory, row.environment, row.flags));
        EXPECT_EQ(readAll(*process->getInputStream()), row.output);
        EXPECT_EQ(readAll(*process->getErrorStream()), row.error) << row.output;
        EXPECT_EQ(process->join(), row.code) << row.output;
    }
}

TEST(Process, TellsWhatCannotBeStarted)
{
    struct {
        const char16_t* program;
        const char16_t* directory;
        unsigned int flags;
        int error;
    } cases[] = {
        {u"/no/such/program", nullptr, 0, ENOENT},
        {u"printf", nullptr, 0, ENOENT},
        {u"no-such-program", nullptr, 1, ENOENT},
        {u"/etc/passwd", nullptr, 0, EACCES},
        {u"/bin/sh", u"/no/such/folder", 0, ENOENT},
        {u"/bin/sh", nullptr, 2, EINVAL},
        {u"", nullptr, 0, EINVAL},
        {nullptr, nullptr, 0, EINVAL},
    };
    for (const auto& row : cases)
        EXPECT_EQ(resultOf([&] { Process(row.program, nullptr, row.directory, nullptr, row.flags); }),
            VXResultFromNative(row.error))
            << (row.program != nullptr ? String(row.program) : String(u"null"));
}

TEST(Process, IsJoinedOnce)
{
    const Reference<Process> process = shell("read line; exit 5");
    EXPECT_EQ(messageOf([&] { process->getExitCode(); }), "process has not been joined");
    EXPECT_FALSE(process->tryJoin());
    EXPECT_TRUE(process->getOutputStream() == process->getOutputStream());
    EXPECT_TRUE(process->getInputStream() == process->getInputStream());
    EXPECT_TRUE(process->getErrorStream() == process->getErrorStream());
    process->getOutputStream()->close(); // leaves the pipe open
    EXPECT_FALSE(process->tryJoin());
    process->closeInput();
    while (!process->tryJoin())
        std::this_thread::yield();
    EXPECT_EQ(process->getExitCode(), 5);
    EXPECT_EQ(messageOf([&] { process->join(); }), "process already joined");
    EXPECT_EQ(messageOf([&] { process->tryJoin(); }), "process already joined");
    EXPECT_EQ(resultOf([&] { process->getID(); }), RESULT_NOT_AVAILABLE);
    EXPECT_EQ(resultOf([] { Process::joinChild(); }), RESULT_NOT_AVAILABLE);
    EXPECT_EQ(Process::getCurrentID(), static_cast<unsigned>(::getpid()));
}

TEST(Process, LosesItsRecordToAnotherCollector)
{
    const Reference<Process> process = shell("echo $$");
    ASSERT_GT(::waitpid(std::stoi(readAll(*process->getInputStream())), nullptr, 0), 0);
    EXPECT_FALSE(process->tryJoin());
    try {
        process->join();
        ADD_FAILURE();
    } catch (const ResultException& failure) {
        EXPECT_EQ(failure.getDescription(), u"process join failed");
    }
}

TEST(Process, CarriesMoreThanAPipeHoldsInBothDirections)
{
    std::string text(3'000'000, 'x');
    for (std::size_t index = 0; index < text.size(); index += 61)
        text[index] = static_cast<char>(index);
    const Reference<Process> process = shell("tee /dev/fd/2");
    std::thread writer([&] { writeAll(*process, text); });
    std::string errors;
    const Reference<io::InputStream> errorStream = process->getErrorStream();
    std::thread reader([&] { errors = readAll(*errorStream); });
    EXPECT_TRUE(readAll(*process->getInputStream()) == text);
    writer.join();
    reader.join();
    EXPECT_TRUE(errors == text);
    EXPECT_EQ(process->join(), 0);
}

TEST(Process, FailsToWriteToAChildThatHasGone)
{
    const Reference<Process> process = shell("exec <&-");
    EXPECT_EQ(process->join(), 0);
    const signed char byte = 0;
    EXPECT_EQ(resultOf([&] { process->getOutputStream()->write(&byte, 1); }), VXResultFromNative(EPIPE));
    process->closeInput();
    EXPECT_EQ(resultOf([&] { process->getOutputStream()->write(&byte, 1); }), RESULT_INVALID_HANDLE);
}

std::size_t openDescriptors()
{
    const std::filesystem::directory_iterator all("/proc/self/fd");
    return static_cast<std::size_t>(std::distance(begin(all), end(all)));
}

TEST(Process, GivesTheChildThreeStreamsAndNothingElse)
{
    const std::size_t before = openDescriptors();
    const int inheritable = ::open("/dev/null", O_RDONLY);
    sigset_t blocked;
    sigset_t mask;
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

TEST(Process, KeepsItsPipesAsLongAsSomebodyUsesThem)
{
    const std::size_t before = openDescriptors();
    for (int count = 0; count < 20; ++count) {
        EXPECT_LT(resultOf([] { Process(u"/no/such/program"); }), 0);
        Reference<Process> process = shell("echo kept");
        const Reference<io::InputStream> kept = process->getInputStream();
        EXPECT_EQ(process->join(), 0);
        process = nullptr;
        EXPECT_EQ(readAll(*kept), "kept\n");
    }
    EXPECT_EQ(openDescriptors(), before);
}

/// A child of one thread that had the pipe of another's would keep that one from its end.
TEST(Process, StartsFromSeveralThreadsAtOnce)
{
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 4; ++thread)
        threads.emplace_back([] {
            for (int count = 0; count < 10; ++count) {
                Process process(u"/bin/cat");
                writeAll(process, "through");
                EXPECT_EQ(readAll(*process.getInputStream()), "through");
                EXPECT_EQ(process.join(), 0);
            }
        });
    for (std::thread& thread : threads)
        thread.join();
}

TEST(Process, LeavesNoZombieWhenNobodyJoins)
{
    Reference<Process> running = shell("echo $$; read line");
    Reference<Process> ended = shell("echo $$");
    const Reference<io::OutputStream> keptOpen = running->getOutputStream();
    const Reference<io::InputStream> output = running->getInputStream();
    signed char digits[16];
    const std::int32_t length = output->read(digits, sizeof digits);
    const pid_t runningId = std::stoi(std::string(reinterpret_cast<char*>(digits), static_cast<std::size_t>(length)));
    const pid_t endedId = std::stoi(readAll(*ended->getInputStream()));
    running = nullptr;
    ended = nullptr;
    EXPECT_NE(stateOfProcess(runningId), '\0') << "goes on alone";
    const signed char end = '\n';
    keptOpen->write(&end, 1);
    while (stateOfProcess(runningId) != '\0' || stateOfProcess(endedId) != '\0')
        std::this_thread::yield();
}

TEST(Process, StartsWithoutStandardStreamsOfItsOwn)
{
    Child child([](Child::Side&) {
        for (const int standard : {0, 1})
            ::close(standard);
        const Reference<Process> process = shell("cat; echo error >&2");
        writeAll(*process, "text");
        EXPECT_EQ(readAll(*process->getInputStream()), "text");
        EXPECT_EQ(readAll(*process->getErrorStream()), "error\n");
        EXPECT_EQ(process->join(), 0);
    });
    EXPECT_EQ(child.wait(), 0);
}

} // namespace
} // namespace vx::exec
