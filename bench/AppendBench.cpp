// What it costs to append one short entry to a file that other processes append to, beside a file lock around the same
// system calls, and to take and post a named semaphore, beside one of the system that does not outlive a killed holder.
#include "vx/io/FileOutputStream.h"
#include "vxsys/Named.h"

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <semaphore.h>
#include <string>
#include <sys/file.h>
#include <unistd.h>

namespace {

using vx::io::FileOutputStream;

/// A file in memory, so that the system's part is small; gone at the end.
class TargetFile {
public:
    TargetFile()
    {
        m_descriptor = ::mkstemp(m_path.data());
        if (m_descriptor == -1)
            std::abort();
    }
    ~TargetFile()
    {
        ::close(m_descriptor);
        ::unlink(m_path.c_str());
    }
    TargetFile(const TargetFile&) = delete;
    TargetFile& operator=(const TargetFile&) = delete;

    vx::String path() const { return vx::String(std::u16string(m_path.begin(), m_path.end()).c_str()); }
    int descriptor() const { return m_descriptor; }

    void check(benchmark::State& state, std::int64_t entry) const
    {
        const std::int64_t size = ::lseek(m_descriptor, 0, SEEK_END);
        if (size != state.iterations() * entry)
            state.SkipWithError("lost an entry");
        state.SetBytesProcessed(size);
    }

private:
    std::string m_path = "/dev/shm/append-bench-XXXXXX";
    int m_descriptor = -1;
};

void appendByStream(benchmark::State& state, unsigned mode)
{
    TargetFile file;
    const std::string entry(static_cast<std::size_t>(state.range(0)), 'x');
    FileOutputStream stream(file.path(), mode);
    for (auto _ : state)
        stream.write(entry.data(), static_cast<std::int32_t>(entry.size()));
    file.check(state, state.range(0));
}

void appendByFileLock(benchmark::State& state)
{
    TargetFile file;
    const std::string entry(static_cast<std::size_t>(state.range(0)), 'x');
    for (auto _ : state) {
        ::flock(file.descriptor(), LOCK_EX);
        ::lseek(file.descriptor(), 0, SEEK_END);
        benchmark::DoNotOptimize(::write(file.descriptor(), entry.data(), entry.size()));
        ::flock(file.descriptor(), LOCK_UN);
    }
    file.check(state, state.range(0));
}

void takeAndPostNamed(benchmark::State& state)
{
    VXHandle semaphore = nullptr;
    if (VXNamedSemOpen(("append bench " + std::to_string(::getpid())).c_str(), 1, &semaphore) != 0)
        state.SkipWithError("cannot be opened");
    for (auto _ : state) {
        if (VXSemaphoreWait(semaphore) != 0 || VXSemaphorePost(semaphore) != 0)
            state.SkipWithError("not taken");
    }
    VXNamedSemClose(semaphore);
}

void takeAndPostOfTheSystem(benchmark::State& state)
{
    sem_t semaphore;
    ::sem_init(&semaphore, 1, 1);
    for (auto _ : state) {
        if (::sem_wait(&semaphore) != 0 || ::sem_post(&semaphore) != 0)
            state.SkipWithError("not taken");
    }
    ::sem_destroy(&semaphore);
}

BENCHMARK_CAPTURE(appendByStream, plain, FileOutputStream::TRUNC)->Arg(100)->Arg(4096);
BENCHMARK_CAPTURE(appendByStream, append, FileOutputStream::APPEND)->Arg(100)->Arg(4096);
BENCHMARK(appendByFileLock)->Arg(100)->Arg(4096);
BENCHMARK(takeAndPostNamed);
BENCHMARK(takeAndPostOfTheSystem);

} // namespace
