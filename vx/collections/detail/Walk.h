#pragma once

#include "vx/Reference.h"

#include <cstddef>
#include <functional>
#include <iterator>
#include <type_traits>
#include <utility>

namespace vx::collections::detail {

/// The iterator of a range-for over a collection, for one pass. Passes each element of `Cursor`, an iterator with
/// `hasNext` and `next`, through `Projection`. Keeps the collection alive, and fails as `Cursor` does if the collection
/// changes.
template <class Cursor, class Projection = std::identity>
class Walk {
public:
    using iterator_concept = std::input_iterator_tag;
    using difference_type = std::ptrdiff_t;
    using value_type = std::remove_cvref_t<std::invoke_result_t<Projection, decltype(std::declval<Cursor&>().next())>>;

    /// Reads the first element at once.
    explicit Walk(Reference<Cursor> cursor)
        : m_cursor(std::move(cursor))
    {
        ++*this;
    }

    const value_type& operator*() const noexcept { return m_element; }
    const value_type* operator->() const noexcept { return &m_element; }
    Walk& operator++()
    {
        m_atEnd = !m_cursor->hasNext();
        m_element = m_atEnd ? value_type() : Projection()(m_cursor->next());
        return *this;
    }
    void operator++(int) { ++*this; }

    friend bool operator==(const Walk& walk, std::default_sentinel_t) noexcept { return walk.m_atEnd; }

private:
    Reference<Cursor> m_cursor;
    value_type m_element {};
    bool m_atEnd = false;
};

} // namespace vx::collections::detail
