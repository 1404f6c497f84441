#pragma once

#include "vx/Reference.h"

#include <cstddef>
#include <functional>
#include <iterator>
#include <type_traits>
#include <utility>

namespace vx::collections::detail {

/// The iterator of a collection for range-for and for algorithms that make one pass. Passes each element of `Cursor`, an iterator with
/// `hasNext` and `next`, through `Projection`. Keeps the collection alive, and fails as `Cursor` does if the collection
/// changes.
template <class Cursor, class Projection = std::identity>
class Walk {
public:
    using iterator_concept = std::input_iterator_tag;
    using iterator_category = std::input_iterator_tag;
    using difference_type = std::ptrdiff_t;
    using value_type = std::remove_cvref_t<std::invoke_result_t<Projection, decltype(std::declval<Cursor&>().next())>>;

    using reference = const value_type&;
    using pointer = const value_type*;

    /// What `*i++` reads.
    struct Passed {
        value_type element;
        const value_type& operator*() const noexcept { return element; }
    };

    /// The end of any collection.
    Walk() noexcept = default;
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
    Passed operator++(int)
    {
        Passed passed {m_element};
        ++*this;
        return passed;
    }

    /// Copies share their position, so only ends differ from other positions.
    friend bool operator==(const Walk& left, const Walk& right) noexcept { return left.m_atEnd == right.m_atEnd; }
    friend bool operator==(const Walk& walk, std::default_sentinel_t) noexcept { return walk.m_atEnd; }
    operator std::default_sentinel_t() const noexcept { return {}; }

private:
    Reference<Cursor> m_cursor;
    value_type m_element {};
    bool m_atEnd = true;
};

} // namespace vx::collections::detail
