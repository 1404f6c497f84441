#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>
#include <initializer_list>

/// The place of a virtual operation in its table, from a pointer to it in the common C++ ABI. A virtual destructor takes
/// two places.
template <class Operation>
std::size_t slotOf(Operation operation)
{
    std::size_t word = 0;
    std::memcpy(&word, &operation, sizeof word);
    return (word - 1) / sizeof(void*);
}

/// Whether the operations stand one behind the other from `first` on.
inline void expectSlots(const char* what, std::size_t first, std::initializer_list<std::size_t> slots)
{
    std::size_t expected = first;
    for (const std::size_t slot : slots)
        EXPECT_EQ(slot, expected++) << what;
}

/// Calls an operation by its place alone, as a component that was built elsewhere does.
template <class Result, class... Arguments>
Result callSlot(void* view, std::size_t slot, Arguments... arguments)
{
    using Function = Result (*)(void*, Arguments...);
    return reinterpret_cast<Function>((*static_cast<void***>(view))[slot])(view, arguments...);
}
