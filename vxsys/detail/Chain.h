#pragma once

namespace vxsys::detail {

// Lists of objects that are linked by their members `next`, which need no constructor and no destructor to run.

/// The address of the pointer to the first element that `matches`, or of the null pointer after the last.
template <class T, class Predicate>
T** findPlace(T*& first, Predicate matches) noexcept
{
    T** place = &first;
    while (*place != nullptr && !matches(**place))
        place = &(*place)->next;
    return place;
}

template <class T>
void pushFront(T*& first, T* element) noexcept
{
    element->next = first;
    first = element;
}

/// Removes the element at `place` from its list. Null if there is none.
template <class T>
T* unlink(T** place) noexcept
{
    T* const element = *place;
    if (element != nullptr)
        *place = element->next;
    return element;
}

} // namespace vxsys::detail
