#pragma once

#include <cstddef>

/// Counts the allocations that the library makes on this thread while the probe exists, and can let one of them fail.
/// The program that uses it replaces the platform layer's allocating functions and `operator new`.
class AllocationProbe {
public:
    /// The `failing`th allocation from now on, counted from 1, finds no memory; 0 means none.
    explicit AllocationProbe(int failing = 0) noexcept;
    ~AllocationProbe();
    AllocationProbe(const AllocationProbe&) = delete;
    AllocationProbe& operator=(const AllocationProbe&) = delete;

    int count() const noexcept { return m_count; }
    bool failed() const noexcept { return m_failing != 0 && m_count >= m_failing; }
    /// The size of the last allocation of raw storage.
    std::size_t lastRawSize() const noexcept { return m_lastRawSize; }

    /// Allocations of this program, on all threads, that have not been released.
    static long live() noexcept;

    /// As the constructor, for the allocations of all threads together, until the next call.
    static void failOnAnyThread(int failing) noexcept;
    static bool hasFailedOnAnyThread() noexcept;

    /// For the replaced functions: whether an allocation may go ahead.
    static bool next(std::size_t rawSize) noexcept;

private:
    int m_failing;
    int m_count = 0;
    std::size_t m_lastRawSize = 0;
    AllocationProbe* m_outer;
};

/// Runs `work` again and again, each time with a later allocation that fails, until all of them succeed. Calls
/// `check(failing)` after each failure. Returns the number of failures.
template <class Work, class Check>
int failEachAllocation(Work work, Check check)
{
    for (int failing = 1;; ++failing) {
        bool failed = false;
        {
            AllocationProbe probe(failing);
            try {
                work();
            } catch (...) {
            }
            failed = probe.failed();
        }
        if (!failed)
            return failing - 1;
        check(failing);
    }
}
