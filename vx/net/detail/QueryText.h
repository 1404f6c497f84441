#pragma once

#include "vx/detail/HashOrder.h"
#include "vx/detail/TextHash.h"
#include "vxsys/Text.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

namespace vx::net::detail {

/// The first position of `unit` at `from` or after it, or `npos`.
inline std::size_t find(std::u16string_view text, char16_t unit, std::size_t from = 0) noexcept
{
    const auto found = std::find(text.begin() + static_cast<std::ptrdiff_t>(from), text.end(), unit);
    return found != text.end() ? static_cast<std::size_t>(found - text.begin()) : text.npos;
}

/// Reads the parameters of a query one after another. A parameter without "=" is key and value.
class QueryReader {
public:
    explicit QueryReader(std::u16string_view text) noexcept
        : m_rest(text)
        , m_isDone(text.empty())
    {
    }

    bool next() noexcept;

    std::u16string_view key() const noexcept { return m_key; }
    std::u16string_view value() const noexcept { return m_value; }

private:
    std::u16string_view m_rest;
    std::u16string_view m_key;
    std::u16string_view m_value;
    bool m_isDone;
};

/// A query with few parameters. It keeps them in the order of a `QueryTable`, and needs no allocation.
class ShortQuery {
public:
    /// False for too many parameters, and for a text with a null unit, whose hash only the table computes.
    bool read(std::u16string_view text) noexcept;

    std::optional<std::u16string_view> get(std::u16string_view key) const noexcept
    {
        const auto pairs = std::span(m_pairs).first(m_count);
        const auto found = std::find_if(pairs.begin(), pairs.end(), IsKey(key));
        return found != pairs.end() ? std::optional(found->value) : std::nullopt;
    }

    /// Calls `take(key, value)` for each.
    template <class Take>
    void forEach(Take take) const
    {
        for (const Pair& pair : std::span(m_pairs).first(m_count))
            take(pair.key, pair.value);
    }

private:
    struct Pair {
        std::u16string_view key;
        std::u16string_view value;
        std::uint32_t hash = 0;
        std::uint32_t bucket = 0;
    };

    struct IsKey {
        explicit IsKey(std::u16string_view text) noexcept
            : key(text)
            , hash(vx::detail::hashText(text.data(), static_cast<int>(text.size()), true))
        {
        }
        bool operator()(const Pair& pair) const noexcept
        {
            return hash == pair.hash && key.size() == pair.key.size()
                && VXStrNICmpW(key.data(), pair.key.data(), static_cast<std::int32_t>(key.size())) == 0;
        }

        std::u16string_view key;
        std::uint32_t hash;
    };

    static constexpr vx::detail::HashOrder<> ORDER {};
    static constexpr int MOST = 16;
    static_assert(!ORDER.isFull(MOST));

    bool add(std::u16string_view key, std::u16string_view value) noexcept;

    std::array<Pair, MOST> m_pairs;
    std::size_t m_count = 0;
};

inline bool QueryReader::next() noexcept
{
    if (m_isDone)
        return false;
    const std::size_t end = find(m_rest, u'&');
    m_value = m_rest.substr(0, end);
    m_isDone = end == m_rest.npos;
    m_rest.remove_prefix(m_isDone ? m_rest.size() : end + 1);
    const std::size_t sign = find(m_value, u'=');
    m_key = m_value.substr(0, sign);
    if (sign != m_value.npos)
        m_value.remove_prefix(sign + 1);
    return true;
}

inline bool ShortQuery::read(std::u16string_view text) noexcept
{
    if (find(text, u'\0') != text.npos)
        return false;
    for (QueryReader each(text); each.next();) {
        if (!add(each.key(), each.value()))
            return false;
    }
    return true;
}

inline bool ShortQuery::add(std::u16string_view key, std::u16string_view value) noexcept
{
    const IsKey isKey(key);
    const auto end = m_pairs.begin() + m_count;
    const auto known = std::find_if(m_pairs.begin(), end, isKey);
    if (known != end) {
        known->value = value;
        return true;
    }
    if (m_count == MOST)
        return false;
    // From the last bucket down, and the newest of a bucket first.
    const std::uint32_t bucket = ORDER.bucketOf(isKey.hash);
    const auto place = std::find_if(m_pairs.begin(), end, [&](const Pair& pair) { return pair.bucket <= bucket; });
    std::move_backward(place, end, end + 1);
    *place = {key, value, isKey.hash, bucket};
    ++m_count;
    return true;
}

} // namespace vx::net::detail
