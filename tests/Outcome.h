#pragma once

#include "vx/Exception.h"

#include <concepts>
#include <cstdint>

/// The code of the ResultException that `work` throws; 0 without one.
template <std::invocable Work>
std::int32_t resultOf(Work&& work)
{
    try {
        work();
        return 0;
    } catch (const vx::ResultException& failure) {
        return failure.getResult();
    }
}
