#pragma once

namespace vx::detail {

/// Where the suffix of `pattern` that is greatest in one order of the units begins, and the period of that suffix.
struct GreatestSuffix {
    int start;
    int period;
};

template <class Pattern, class Before>
GreatestSuffix findGreatestSuffix(int length, Pattern pattern, Before before) noexcept
{
    int start = 0;
    int period = 1;
    int candidate = 1;
    int compared = 0;
    while (candidate + compared < length) {
        const auto unit = pattern(candidate + compared);
        const auto best = pattern(start + compared);
        if (unit == best) {
            if (++compared == period) {
                candidate += period;
                compared = 0;
            }
        } else if (before(unit, best)) {
            candidate += compared + 1;
            compared = 0;
            period = candidate - start;
        } else {
            start = candidate++;
            compared = 0;
            period = 1;
        }
    }
    return {start, period};
}

/// The first of `candidates` places where `text` continues with the `length` units of `pattern`, or -1. `pattern(index)` and
/// `text(index)` give units that are compared with `==` and `<`. Takes a time in proportion to `candidates + length`, for
/// every text and pattern, and no memory. Source: M. Crochemore and D. Perrin, Two-way string-matching, Journal of the ACM
/// 38(3), 1991.
template <class Pattern, class Text>
int findTwoWay(int length, Pattern pattern, int candidates, Text text) noexcept
{
    const auto up = findGreatestSuffix(length, pattern, [](auto left, auto right) { return left < right; });
    const auto down = findGreatestSuffix(length, pattern, [](auto left, auto right) { return right < left; });
    const auto [cut, period] = up.start > down.start ? up : down;

    bool isPeriodic = cut + period <= length;
    for (int index = 0; isPeriodic && index < cut; ++index)
        isPeriodic = pattern(index) == pattern(index + period);
    // Where the pattern does not repeat itself, a match of the right part allows a step beyond both parts.
    const int step = isPeriodic ? period : (cut > length - cut ? cut : length - cut) + 1;

    int known = 0; // units at the start of the pattern that the last step has shown to match
    int place = 0;
    while (place < candidates) {
        int index = cut > known ? cut : known;
        while (index < length && pattern(index) == text(place + index))
            ++index;
        if (index < length) {
            place += index - cut + 1;
            known = 0;
            continue;
        }
        index = cut;
        while (index > known && pattern(index - 1) == text(place + index - 1))
            --index;
        if (index <= known)
            return place;
        place += step;
        known = isPeriodic ? length - period : 0;
    }
    return -1;
}

} // namespace vx::detail
