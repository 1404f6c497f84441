#pragma once

#include "vx/Exception.h"

#include <concepts>
#include <cstdint>
#include <string>

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

/// The description of the `Thrown` that `work` throws.
template <std::derived_from<vx::Exception> Thrown, std::invocable Work>
std::string saidBy(Work&& work)
{
    try {
        work();
        return "nothing was thrown";
    } catch (const Thrown& failure) {
        return failure.getDescription().toUtf8();
    }
}
