#pragma once

#include <cstdio>
#include <cstdlib>

/// Ends the program where a law does not hold: a fuzzer keeps the input then.
#define VX_LAW(condition)                                                                                              \
    do {                                                                                                               \
        if (!(condition)) {                                                                                            \
            std::fprintf(stderr, "%s:%d: %s\n", __FILE__, __LINE__, #condition);                                       \
            std::abort();                                                                                              \
        }                                                                                                              \
    } while (false)
