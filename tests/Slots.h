#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>
#include <initializer_list>

/// The position of a virtual operation in its table, from a pointer to it in the common C++ ABI. A virtual destructor
/// has two positions.
template <class Operation>
std::size_t slotOf(Operation operation)
{
    std::size_t word = 0;
    std::memcpy(&word, &operation, sizeof word);
    return (word - 1) / sizeof(void*);
}

/// The same for one of several overloads, selected by its signature: `slotOf<int(char) const>(&T::get)`.
template <class Signature, class T>
std::size_t slotOf(Signature T::*operation)
{
    return slotOf<Signature T::*>(operation);
}

inline std::size_t slotOf(std::size_t place)
{
    return place;
}

/// An operation, or its position if it has overloads.
struct Slot {
    template <class Operation>
    Slot(Operation operation)
        : place(slotOf(operation))
    {
    }

    std::size_t place;
};

/// Expects the operations in consecutive positions from `first` on.
inline void expectSlots(const char* what, std::size_t first, std::initializer_list<Slot> slots)
{
    std::size_t expected = first;
    for (const Slot slot : slots)
        EXPECT_EQ(slot.place, expected++) << what;
}

/// Calls an operation by its position, as a component does that was built elsewhere.
template <class Result, class... Arguments>
Result callSlot(void* view, std::size_t slot, Arguments... arguments)
{
    using Function = Result (*)(void*, Arguments...);
    return reinterpret_cast<Function>((*static_cast<void***>(view))[slot])(view, arguments...);
}

/// The number of positions in the table of a class: the position of the first operation that a derived class appends.
template <class T>
std::size_t slotsOf()
{
    struct Derived : T {
        virtual void appended() { }
    };
    return slotOf(&Derived::appended);
}
