#pragma once

#include <gtest/gtest.h>

#include <random>
#include <string>

/// Different numbers in each run. A failure in its block prints the seed.
class Random : public std::mt19937 {
public:
    explicit Random(unsigned seed = std::random_device()())
        : std::mt19937(seed)
        , m_trace(__FILE__, __LINE__, "seed " + std::to_string(seed))
    {
    }

    int below(int end) { return static_cast<int>((*this)() % static_cast<unsigned>(end)); }

private:
    testing::ScopedTrace m_trace;
};
