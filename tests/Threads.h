#pragma once

#include <thread>
#include <vector>

/// Runs `work(0)` to `work(count - 1)`, each in a thread of its own, to their ends.
template <class Work>
void inThreads(int count, Work work)
{
    std::vector<std::jthread> threads;
    for (int thread = 0; thread < count; ++thread)
        threads.emplace_back([&work, thread] { work(thread); });
}
