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

/// The same for one of several overloads, told by its signature: `slotOf<int(char) const>(&T::get)`.
template <class Signature, class T>
std::size_t slotOf(Signature T::*operation)
{
    return slotOf<Signature T::*>(operation);
}

inline std::size_t slotOf(std::size_t place)
{
    return place;
}

/// An operation, or its place where it has overloads.
struct Slot {
    template <class Operation>
    Slot(Operation operation)
        : place(slotOf(operation))
    {
    }

    std::size_t place;
};

/// Expects the operations in consecutive places from `first` on.
inline void expectSlots(const char* what, std::size_t first, std::initializer_list<Slot> slots)
{
    std::size_t expected = first;
    for (const Slot slot : slots)
        EXPECT_EQ(slot.place, expected++) << what;
}

/// Calls an operation by its place alone, as a component that was built elsewhere does.
template <class Result, class... Arguments>
Result callSlot(void* view, std::size_t slot, Arguments... arguments)
{
    using Function = Result (*)(void*, Arguments...);
    return reinterpret_cast<Function>((*static_cast<void***>(view))[slot])(view, arguments...);
}

/// The place that the first operation appended by a derived class gets: how many the class has.
template <class T>
std::size_t slotsOf()
{
    struct Derived : T {
        virtual void appended() { }
    };
    return slotOf(&Derived::appended);
}
